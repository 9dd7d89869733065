#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace documentserver
{

/// One entry of the accounts file. Members this program does not know stay as they are.
class Account
{
public:
    Account() = default;
    explicit Account(QJsonObject entry) : members(std::move(entry)) {}

    QString name() const { return text("account"); }
    QString userid() const { return text("userid"); }
    QString displayName() const { return text("name"); }
    QString mail() const { return text("mail"); }
    QString phone() const { return text("phone"); }
    QString otpSecret() const { return text("otpsecret"); }
    QString hash() const { return text("hash"); }
    bool isDisabled() const { return flag("disabled"); }
    bool hasInitialPassword() const { return flag("initialpassword"); }
    bool isPasswordControlled() const { return json().value(QLatin1String("pwdcontrol")).toInt() == 1; }
    /// When the password was last changed through the API, in milliseconds since 1970; 0: never.
    qint64 passwordChanged() const { return members.value(QLatin1String("passwordchanged")).toInteger(); }

    const QJsonObject &json() const { return members; }
    void set(const char *member, const QJsonValue &value) { members.insert(QLatin1String(member), value); }
    void remove(const char *member) { members.remove(QLatin1String(member)); }

    /// The members of the answer to "user" "get" that the accounts file decides.
    QJsonObject userInformation() const;

private:
    QString text(const char *member) const { return members.value(QLatin1String(member)).toString(); }
    bool flag(const char *member) const { return members.value(QLatin1String(member)).toBool(); }

    QJsonObject members;
};

/// The account made where there is no accounts file yet. Its plain password is hashed when the file is read.
QJsonObject demoAccount();

} // namespace documentserver
