#pragma once

#include <QString>
#include <QVariantMap>

namespace platform
{

/// An application folder `Name.app/Contents/{Info.plist,MacOS,Resources,PlugIns}`. A value; any thread. A process that
/// does not run from a bundle has a main bundle whose paths are null.
class Bundle
{
public:
    /// The bundle the running executable stands in, read once.
    static const Bundle &main();

    Bundle() = default;
    explicit Bundle(const QString &bundlePath);

    QString bundlePath() const { return path; }
    QString executablePath() const;
    QString resourcePath() const;
    QString builtInPlugInsPath() const;

    /// Full path of `name.type` among the resources, null when no such file or folder is there.
    QString pathForResource(const QString &name, const QString &type) const;

    QString identifier() const { return infoString(QStringLiteral("CFBundleIdentifier")); }
    QString shortVersion() const { return infoString(QStringLiteral("CFBundleShortVersionString")); }
    /// A text of the Info.plist, null when absent.
    QString infoString(const QString &key) const;

private:
    QString path;
    QVariantMap info;
};

} // namespace platform
