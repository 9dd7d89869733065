#include "platform/Bundle.h"

#include "platform/HostProcess.h"
#include "platform/PropertyList.h"

#include <QFileInfo>

namespace platform
{

namespace
{
QString joined(const QString &path, const QString &rest)
{
    return path.isNull() ? QString() : path + rest;
}
} // namespace

QString bundlePathOf(const QString &executable)
{
    const QString folder = executable.section(u'/', 0, -2);
    const QString suffix = QStringLiteral(".app/Contents/MacOS");
    if (!folder.endsWith(suffix) || folder.size() == suffix.size())
        return {};
    return folder.chopped(suffix.size() - 4);
}

const Bundle &Bundle::main()
{
    static const Bundle bundle(bundlePathOf(executableFile()));
    return bundle;
}

Bundle::Bundle(const QString &bundlePath)
    : path(bundlePath.isEmpty() ? QString() : bundlePath),
      info(PropertyList::readDictionary(joined(path, QStringLiteral("/Contents/Info.plist"))).value_or(QVariantMap()))
{
}

QString Bundle::executablePath() const
{
    const QString name = infoString(QStringLiteral("CFBundleExecutable"));
    return name.isEmpty() ? QString() : joined(path, QStringLiteral("/Contents/MacOS/") + name);
}

QString Bundle::resourcePath() const
{
    return joined(path, QStringLiteral("/Contents/Resources"));
}

QString Bundle::builtInPlugInsPath() const
{
    return joined(path, QStringLiteral("/Contents/PlugIns"));
}

QString Bundle::pathForResource(const QString &name, const QString &type) const
{
    if (path.isNull() || name.isEmpty())
        return {};
    const QString file = resourcePath() + u'/' + (type.isEmpty() ? name : name + u'.' + type);
    return QFileInfo::exists(file) ? file : QString();
}

QString Bundle::infoString(const QString &key) const
{
    const QVariant value = info.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace platform
