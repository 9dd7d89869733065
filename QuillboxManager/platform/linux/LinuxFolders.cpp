#include "platform/linux/LinuxFolders.h"

#include "platform/Log.h"

#include <QDir>
#include <QFile>

#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform
{

namespace
{

QString absoluteVariable(const char *name)
{
    const QString value = QFile::decodeName(qgetenv(name));
    return value.startsWith(u'/') ? value : QString();
}

QString below(const QString &folder, const QString &rest)
{
    return folder.isNull() ? QString() : folder + u'/' + rest;
}

QString homeOfAccount()
{
    std::vector<char> buffer(16384);
    passwd entry = {};
    passwd *found = nullptr;
    ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found ? QFile::decodeName(found->pw_dir) : QString();
}

bool isOwnFolder(const QByteArray &path, mode_t forbidden)
{
    struct stat information = {};
    return ::lstat(path.constData(), &information) == 0 && S_ISDIR(information.st_mode) &&
           information.st_uid == ::geteuid() && (information.st_mode & forbidden) == 0;
}

/// The folder when it is there, or can be made, for this user alone.
QString privateFolder(const QString &path)
{
    const QByteArray encoded = QFile::encodeName(path);
    ::mkdir(encoded.constData(), 0700);
    if (isOwnFolder(encoded, 0))
        ::chmod(encoded.constData(), 0700); // an unusual umask, or one made too open by hand
    return isOwnFolder(encoded, 077) ? path : QString();
}

} // namespace

QString LinuxFolders::home() const
{
    const QString home = absoluteVariable("HOME");
    return home.isNull() ? homeOfAccount() : home;
}

QString LinuxFolders::configurationBase() const
{
    const QString base = absoluteVariable("XDG_CONFIG_HOME");
    return base.isNull() ? below(home(), QStringLiteral(".config")) : base;
}

QString LinuxFolders::dataBase() const
{
    const QString base = absoluteVariable("XDG_DATA_HOME");
    return base.isNull() ? below(home(), QStringLiteral(".local/share")) : base;
}

QString LinuxFolders::library() const
{
    return below(dataBase(), QStringLiteral("com.velto.quillbox/Library"));
}

QString LinuxFolders::caches() const
{
    const QString variable = absoluteVariable("XDG_CACHE_HOME");
    const QString base = variable.isNull() ? below(home(), QStringLiteral(".cache")) : variable;
    return below(base, QStringLiteral("com.velto.quillbox"));
}

QString LinuxFolders::fonts() const
{
    return below(dataBase(), QStringLiteral("fonts"));
}

QString LinuxFolders::temporary() const
{
    const QString runtime = absoluteVariable("XDG_RUNTIME_DIR");
    if (!runtime.isNull() && isOwnFolder(QFile::encodeName(runtime), 022)) {
        const QString folder = privateFolder(runtime + QStringLiteral("/com.velto.quillbox"));
        if (!folder.isNull())
            return folder;
    }
    const QString variable = absoluteVariable("TMPDIR");
    const QString base = variable.isNull() ? QStringLiteral("/tmp") : variable;
    const QString folder = privateFolder(base + QStringLiteral("/com.velto.quillbox-%1").arg(::geteuid()));
    if (folder.isNull())
        log(QStringLiteral("No private folder can be made in %1").arg(base));
    return folder;
}

QString LinuxFolders::volumes() const
{
    const QString folder = absoluteVariable("QUILLBOX_VOLUMES");
    if (folder.isNull())
        return QStringLiteral("/Volumes");
    // As the mount table will name it: without links and slashes too many.
    std::error_code failure;
    const auto real =
        std::filesystem::weakly_canonical(QFile::encodeName(QDir::cleanPath(folder)).toStdString(), failure);
    return failure ? folder : QFile::decodeName(real.c_str());
}

QString LinuxFolders::userDefaultsFile() const
{
    return below(configurationBase(), QStringLiteral("com.velto.quillbox.plist"));
}

} // namespace platform
