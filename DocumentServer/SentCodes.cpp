#include "SentCodes.h"

#include "ApiError.h"
#include "PasswordHash.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// Far more than there are accounts on a server of this size; only made-up names get there.
constexpr qsizetype mostPending = 10'000;

void requireGateway(const CodeWay &way, const Scenario &scenario)
{
    const bool isSms = way.name == "sms"_L1;
    const QString state = scenario.text(isSms ? "second_factor.sms" : "second_factor.email");
    if (state == "down"_L1)
        throw ApiError{isSms ? SmsGatewayDown : MailServerDown, {}, {}, {}};
    if (state == "refuse"_L1)
        throw ApiError{SendingRefused, {}, {}, {}};
}

QString randomCode()
{
    return u"%1"_s.arg(QRandomGenerator::system()->bounded(1'000'000), 6, 10, QChar(u'0'));
}
} // namespace

QString maskedPhone(const QString &phone)
{
    if (phone.size() < 8)
        return QString(phone.size(), u'*');
    return phone.left(3) + QString(phone.size() - 7, u'*') + phone.right(4);
}

QString maskedMail(const QString &mail)
{
    const qsizetype at = mail.lastIndexOf(u'@');
    return at <= 0 ? QString(mail.size(), u'*') : mail.left(1) + "***"_L1 + mail.mid(at);
}

SentCodes::Code &SentCodes::last(const QString &account)
{
    if (pending.size() >= mostPending && !pending.contains(account))
        pending.clear();
    return pending[account];
}

SentCodes::Sent SentCodes::send(const QString &account, const CodeWay &way, const Scenario &scenario)
{
    requireGateway(way, scenario);
    const qint64 interval = scenario.number("second_factor.send_interval");
    const std::lock_guard lock(mutex);
    Code &code = last(account);
    const qint64 wait = code.sent + interval * 1000 - now();
    if (code.sent > 0 && wait > 0) {
        if (code.text.isEmpty() || code.expires <= now())
            throw ApiError{SentTooRecently, {}, {}, {}};
        return {way.masked, (wait + 999) / 1000, true};
    }
    const QString text = randomCode();
    if (outbox && !outbox->deliver({account, way.name, way.destination, text}))
        throw ApiError{SendingRefused, {}, {}, {}};
    code = {text, now(), now() + scenario.number("second_factor.code_life") * 1000, 0};
    return {way.masked, interval, false};
}

bool SentCodes::check(const QString &account, const QString &code, const Scenario &scenario)
{
    const std::lock_guard lock(mutex);
    const auto found = pending.find(account);
    if (found == pending.end() || found->text.isEmpty() || found->expires <= now())
        return false;
    const bool right = outbox && equalInConstantTime(found->text.toUtf8(), code.trimmed().toUtf8());
    if (right || ++found->wrong >= scenario.number("second_factor.wrong_codes"))
        found->text.clear();
    return right;
}

} // namespace documentserver
