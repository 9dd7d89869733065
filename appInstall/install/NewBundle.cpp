#include "install/NewBundle.h"

#include "install/CodeResources.h"
#include "platform/Bundle.h"
#include "platform/Task.h"

#include <QFile>
#include <QFileInfo>
#include <QVersionNumber>

#include <chrono>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{
bool isExecutableFile(const QString &path)
{
    struct stat information = {};
    return ::lstat(QFile::encodeName(path).constData(), &information) == 0 && S_ISREG(information.st_mode) &&
           information.st_size > 0 && (information.st_mode & S_IXUSR) != 0;
}
} // namespace

QString productIdentifier()
{
    return u"com.velto.quillbox"_s;
}

QString problemWithProduct(const QString &bundle)
{
    const platform::Bundle product(bundle);
    if (product.identifier() != productIdentifier())
        return u"it is not this product"_s;
    const QString name = product.infoString(u"CFBundleExecutable"_s);
    if (name.isEmpty() || name.startsWith(u'.') || name.contains(u'/'))
        return u"it names no executable"_s;
    if (!isExecutableFile(product.executablePath()))
        return u"its executable is missing"_s;
    return {};
}

QString problemWithCandidate(const QString &candidate, const QString &installed)
{
    if (const QString problem = problemWithProduct(candidate); !problem.isNull())
        return problem;
    const QString version = platform::Bundle(candidate).shortVersion();
    const QVersionNumber offered = QVersionNumber::fromString(version);
    if (offered.isNull())
        return u"it has no version"_s;
    const QVersionNumber current = QVersionNumber::fromString(platform::Bundle(installed).shortVersion());
    if (QVersionNumber::compare(offered.normalized(), current.normalized()) < 0)
        return u"its version %1 is older than %2"_s.arg(offered.toString(), current.toString());
    if (!QFileInfo(codeResourcesFile(candidate)).isFile())
        return u"its list of code resources is missing"_s;
    return {};
}

QString problemWithExecutable(const QString &bundle)
{
    constexpr std::chrono::seconds patience(20);
    const bool runs =
        platform::runTask(platform::Bundle(bundle).executablePath(), {u"--version"_s}, patience).status == 0;
    return runs ? QString() : u"its executable cannot run here"_s;
}

} // namespace install
