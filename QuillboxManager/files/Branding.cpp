#include "files/Branding.h"

#include "platform/Bundle.h"
#include "platform/PropertyList.h"

Branding::Branding(const QString &brandingFile) : path(brandingFile)
{
    if (path.isNull())
        path = platform::Bundle::main().pathForResource(QStringLiteral("QBOEM"), QStringLiteral("plist"));
}

QString Branding::value(const QString &key, const QString &fallback) const
{
    const auto dictionary = platform::PropertyList::readDictionary(path);
    const QVariant found = dictionary ? dictionary->value(key) : QVariant();
    return found.typeId() == QMetaType::QString ? found.toString() : fallback;
}

bool Branding::contains(const QString &key) const
{
    return platform::PropertyList::readDictionary(path).value_or(QVariantMap()).contains(key);
}

bool Branding::setValue(const QString &key, const QString &value) const
{
    auto dictionary = platform::PropertyList::readDictionary(path);
    if (!dictionary)
        return false;
    dictionary->insert(key, value);
    // Part of an installation that every user of the machine may read.
    return platform::PropertyList::write(path, *dictionary, true);
}

QString Branding::themeColor() const
{
    return value(QStringLiteral("themeColor"), QStringLiteral("0xDD3333"));
}

QString Branding::hoverColor() const
{
    return value(QStringLiteral("hoverColor"), QStringLiteral("0xF34343"));
}

QString Branding::pushColor() const
{
    return value(QStringLiteral("pushColor"), QStringLiteral("0xB71B1C"));
}

QString Branding::disabledColor() const
{
    return value(QStringLiteral("disabledColor"), QStringLiteral("0xEF6868"));
}

QString Branding::presetServer() const
{
    return value(QStringLiteral("IPAddress"), QStringLiteral(""));
}
