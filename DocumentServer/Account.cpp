#include "Account.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

QJsonObject Account::userInformation() const
{
    return {{u"userid"_s, userid()},
            {u"account"_s, name()},
            {u"name"_s, displayName().isEmpty() ? name() : displayName()},
            {u"mail"_s, mail()},
            {u"usertype"_s, members.value("usertype"_L1).toInt(1)},
            {u"pwdcontrol"_s, members.value("pwdcontrol"_L1).toInt(0)},
            {u"roleinfos"_s, members.value("roleinfos"_L1).toArray()},
            {u"directdepinfos"_s, members.value("directdepinfos"_L1).toArray()}};
}

QJsonObject demoAccount()
{
    return {{u"account"_s, u"demo"_s},
            {u"password"_s, u"Quillbox-demo1"_s},
            {u"name"_s, u"Demo User"_s},
            {u"mail"_s, u"demo@example.org"_s},
            {u"phone"_s, u"13800001234"_s},
            {u"otpsecret"_s, u"KF2WS3DMMJXXQLLEMVWW6LLPNZSQ"_s},
            {u"usertype"_s, 1},
            {u"pwdcontrol"_s, 0},
            {u"roleinfos"_s, QJsonArray()},
            {u"directdepinfos"_s, QJsonArray{QJsonObject{{u"id"_s, u"1"_s}, {u"name"_s, u"Demonstration"_s}}}}};
}

} // namespace documentserver
