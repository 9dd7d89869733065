#pragma once

#include <QString>

namespace shell
{

/// Pictures and key of the shown title of an entry that the layout of the menu names.
struct MenuLook {
    QString recognitionKey;
    QString normal;
    QString pointer;
    QString disabled;
    QString displayKey;
    bool hasArrow = false;
};

/// The first entry, in a fixed order, whose recognition value equals the title: the localized value of its key, and for
/// the keys that are texts themselves also the text as it stands. Null when there is none.
const MenuLook *recognizeMenuTitle(const QString &title, QString (*localized)(const QString &key));

} // namespace shell
