#pragma once

#include "platform/Host.h"

namespace platform
{

/// Scripts are texts for the shell; the tools stand in the folder "linux" among the resources. Any thread.
class LinuxScripts final : public Scripts
{
public:
    /// `resources`: the folder with the scripts, null for a process outside of a bundle, which finds tools in PATH.
    explicit LinuxScripts(const QString &resources)
        : toolsFolder(resources.isNull() ? QString() : resources + QStringLiteral("/linux/"))
    {
    }

    QStringList appleScriptCommand(const QString &path, const QStringList &arguments) const override
    {
        return QStringList{QStringLiteral("/bin/sh"), path} + arguments;
    }
    QString extensionTool() const override { return toolsFolder + QStringLiteral("pluginkit"); }
    QString diskImageTool() const override { return toolsFolder + QStringLiteral("hdiutil"); }

private:
    const QString toolsFolder;
};

} // namespace platform
