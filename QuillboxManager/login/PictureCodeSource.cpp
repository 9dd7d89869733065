#include "login/PictureCodeSource.h"

#include "login/LoginCalls.h"
#include "login/PictureCode.h"
#include "platform/Dispatch.h"

PictureCodeSource::PictureCodeSource(QBNetworking &client) : networking(client) {}

void PictureCodeSource::fetch()
{
    fetchInPlaceOf({});
}

void PictureCodeSource::refresh()
{
    const auto ask = [&client = networking] { return client.reachability(); };
    platform::inBackground(this, ask, [this, asked = ++number](bool reachable) {
        if (asked != number)
            return;
        if (reachable)
            fetchInPlaceOf(shown);
        else
            Q_EMIT unreachable();
    });
}

void PictureCodeSource::fetchInPlaceOf(const QString &previous)
{
    LoginCalls::pictureCode(networking, this, previous, [this, asked = ++number](const LoginAnswer &answer) {
        if (asked != number)
            return;
        const PictureCode code = answer.reply && answer.error.isNull() ? PictureCode::of(*answer.reply) : PictureCode();
        if (!code.image.isNull())
            shown = code.uuid;
        Q_EMIT arrived(code.image);
    });
}
