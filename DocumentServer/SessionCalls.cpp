#include "CallTable.h"
#include "SignIn.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// The body names the session once more; a mix-up of two sessions extends neither.
QJsonObject refreshToken(const Call &call, Services &services)
{
    const QString token = requiredText(call.body, "tokenid", 128);
    const QString userid = requiredText(call.body, "userid", 128);
    requiredNumber(call.body, "expirestype", 1, 3);
    if (token != call.token || userid != call.session->userid)
        throw ApiError{TokenInvalid, {}, {}, {}};
    const qint64 life = call.scenario->number("token_life");
    services.sessions.extend(token, life);
    return {{u"expires"_s, life}};
}

QJsonObject logout(const Call &call, Services &services)
{
    if (call.body.contains("ostype"_L1))
        requiredNumber(call.body, "ostype", 0, 1000);
    services.sessions.close(call.token);
    return {};
}

QJsonObject pictureCode(const Call &call, Services &services)
{
    const QString previous = optionalText(call.body, "uuid", 64);
    const auto picture = services.pictureCodes.make(previous, call.scenario->number("picture_code.life"));
    services.outbox.note({{}, u"picture"_s, picture.uuid, services.pictureCodes.solution(picture.uuid)});
    return {{u"uuid"_s, picture.uuid}, {u"vcode"_s, QString::fromLatin1(picture.png.toBase64())}};
}

QJsonObject sendVerificationCode(const Call &call, Services &services)
{
    const QString name = requiredText(call.body, "account", longestAccountName);
    const QString password = requiredText(call.body, "password", longestCiphertext);
    optionalText(call.body, "oldtelnum", 256);
    optionalObject(call.body, "deviceinfo");
    const auto gate = services.credentials.gate(name);
    const auto checked = services.credentials.require(name, password, *call.scenario);
    const SentCodes::Sent sent = services.secondFactor.send(checked.account, *call.scenario);
    return {
        {u"authway"_s, sent.destination}, {u"sendinterval"_s, sent.interval}, {u"isduplicatesended"_s, sent.duplicate}};
}
} // namespace

void addSessionCalls(CallTable *table, Services &services)
{
    const auto signIn = std::make_shared<SignIn>(services);
    table->insert(u"auth1.getnew"_s, {[signIn](const Call &call) { return signIn->withPassword(call); }, false});
    table->insert(u"auth1.getbythirdparty"_s, {[signIn](const Call &call) { return signIn->withTicket(call); }, false});
    table->insert(u"auth1.refreshtoken"_s, {[&services](const Call &call) { return refreshToken(call, services); }});
    table->insert(u"auth1.logout"_s, {[&services](const Call &call) { return logout(call, services); }});
    table->insert(u"auth1.getvcode"_s, {[&services](const Call &call) { return pictureCode(call, services); }, false});
    table->insert(u"auth1.sendauthvcode"_s,
                  {[&services](const Call &call) { return sendVerificationCode(call, services); }, false});
}

} // namespace documentserver
