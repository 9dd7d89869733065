#include "SecondFactor.h"

#include "ApiError.h"
#include "PasswordHash.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
struct Way {
    QString name;
    QString destination;
    QString masked;
};

/// SMS goes before e-mail where both are on and bound.
Way wayFor(const Account &account, const Scenario &scenario)
{
    const bool sms = scenario.flag("dualfactor_auth_server_status.auth_by_sms");
    const bool email = scenario.flag("dualfactor_auth_server_status.auth_by_email");
    if (!sms && !email)
        throw ApiError{SecondFactorOff, {}, {}, {}};
    if (sms && !account.phone().isEmpty())
        return {u"sms"_s, account.phone(), maskedPhone(account.phone())};
    if (email && !account.mail().isEmpty())
        return {u"email"_s, account.mail(), maskedMail(account.mail())};
    throw ApiError{NothingBound, {}, {}, {}};
}

void requireGateway(const Way &way, const Scenario &scenario)
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

SecondFactor::Sent SecondFactor::send(const Account &account, const Scenario &scenario)
{
    const Way way = wayFor(account, scenario);
    requireGateway(way, scenario);
    const qint64 interval = scenario.number("second_factor.send_interval");
    const std::lock_guard lock(mutex);
    Code &last = pending[account.name()];
    const qint64 wait = last.sent + interval * 1000 - now();
    if (last.sent > 0 && wait > 0) {
        if (last.text.isEmpty() || last.expires <= now())
            throw ApiError{SentTooRecently, {}, {}, {}};
        return {way.masked, (wait + 999) / 1000, true};
    }
    const QString code = randomCode();
    if (!outbox.deliver({account.name(), way.name, way.destination, code}))
        throw ApiError{SendingRefused, {}, {}, {}};
    last = {code, now(), now() + scenario.number("second_factor.code_life") * 1000, 0};
    return {way.masked, interval, false};
}

bool SecondFactor::check(const QString &account, const QString &code, const Scenario &scenario)
{
    const std::lock_guard lock(mutex);
    const auto found = pending.find(account);
    if (found == pending.end() || found->text.isEmpty() || found->expires <= now())
        return false;
    const bool right = equalInConstantTime(found->text.toUtf8(), code.trimmed().toUtf8());
    if (right || ++found->wrong >= scenario.number("second_factor.wrong_codes"))
        found->text.clear();
    return right;
}

} // namespace documentserver
