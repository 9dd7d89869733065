#include "shell/MenuRecognition.h"

#include <QList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace shell
{

namespace
{
// The suffixes and the misspelt key are names of resources as they stand.
const QList<MenuLook> &knownLooks()
{
    static const QList<MenuLook> looks{
        {u"JwH-8K-t3P.title"_s, u"Disk-Normal"_s, u"Disk-Enter"_s, u"Disk-Gray"_s, u"Disk.title"_s},
        {u"ghO-sy-2oG.title"_s, u"Safari-Normal"_s, u"Safari-Enter"_s, u"Safari-Gray"_s, u"Safari.title"_s},
        {u"Synchronization.title"_s, u"Synchronization_Normal"_s, u"Synchronization_Hover"_s, u"Synchronization_Gray"_s,
         u"Synchronization.title"_s},
        {u"文件直传"_s, u"send_Normal"_s, u"send_Hover"_s, u"send_Gray"_s, u"文件直传"_s},
        {u"Search.title"_s, u"LinkPointer-Enter"_s, u"LinkPointer-Hover"_s, u"LinkPointer-Gray"_s, u"Search.title"_s},
        {u"搜索"_s, u"Search-Normal"_s, u"Search-Enter"_s, u"Search-Gray"_s, u"SearchMenu.titile"_s},
        {u"Setting.title"_s, u"SettingItem-Normal"_s, u"SettingItem-Enter"_s, u"SettingItem-Gray"_s,
         u"Setting.title"_s},
        {u"Help.title"_s, u"Help-Normal"_s, u"Help-Enter"_s, u"Help-Gray"_s, u"Help.title"_s, true},
        {u"Logout.title"_s, u"Logout-Normal"_s, u"Logout-Enter"_s, u"Logout-Gray"_s, u"Logout.title"_s},
        {u"Exit.title"_s, u"Exit-Normal"_s, u"Exit-Enter"_s, u"Exit-Normal"_s, u"Exit.title"_s},
    };
    return looks;
}

bool matches(const MenuLook &look, const QString &title, QString (*localized)(const QString &))
{
    const bool isText = !look.recognitionKey.endsWith(u".title");
    return (isText && title == look.recognitionKey) ||
           (look.recognitionKey != u"文件直传" && title == localized(look.recognitionKey));
}
} // namespace

const MenuLook *recognizeMenuTitle(const QString &title, QString (*localized)(const QString &))
{
    const auto found = std::find_if(knownLooks().cbegin(), knownLooks().cend(),
                                    [&](const MenuLook &look) { return matches(look, title, localized); });
    return found == knownLooks().cend() ? nullptr : &*found;
}

} // namespace shell
