#include "Services.h"

#include "PrivateFile.h"
#include "documents/DemoDocuments.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr const char *layout = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS sessions(token BLOB PRIMARY KEY, userid TEXT, account TEXT, expires INTEGER, made INTEGER)
    WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS sessions_of_user ON sessions(userid, made);
CREATE TABLE IF NOT EXISTS attempts(account TEXT PRIMARY KEY, wrong INTEGER, lockeduntil INTEGER, changed INTEGER);
CREATE TABLE IF NOT EXISTS flags(userid TEXT, name TEXT, value INTEGER, PRIMARY KEY(userid, name));
)";

bool openDataFolder(const QString &folder, QString *error)
{
    if (folder.isEmpty()) {
        *error = u"no data folder is given"_s;
        return false;
    }
    const bool isNew = !QDir(folder).exists();
    if (!QDir().mkpath(folder)) {
        *error = u"cannot make the data folder %1"_s.arg(folder);
        return false;
    }
    return !isNew || QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool exportCertificate(const QString &path, const QByteArray &der, QString *error)
{
    if (path.isEmpty())
        return true;
    if (!writePrivateFile(path, der, error))
        return false;
    return QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
}
} // namespace

Services::Services(const Options &given)
    : options(given), now(given.now ? given.now : Clock(QDateTime::currentMSecsSinceEpoch)),
      accounts(given.passwordCost), sessions(database, now), attempts(database, now), flags(database),
      pictureCodes(now), outbox(given.codesFile, given.printCodes, now), secondFactor(outbox, now),
      credentials(accounts, attempts, passwordKey),
      passwordReset(accounts, credentials, passwordKey, sessions, outbox, now), tickets(now)
{
}

bool Services::open(QString *error)
{
    const QString folder = options.dataFolder;
    const bool ownAccounts = options.accountsFile.isEmpty();
    const QString accountsFile = ownAccounts ? folder + "/accounts.json"_L1 : options.accountsFile;
    return openDataFolder(folder, error) && passwordKey.open(folder, error) &&
           exportCertificate(folder + "/public_key.der"_L1, passwordKey.certificate(), error) &&
           exportCertificate(options.certificateExport, passwordKey.certificate(), error) &&
           accounts.open(accountsFile, ownAccounts, error) && scenario.open(options.scenarioFile, error) &&
           database.open(folder + "/server.sqlite"_L1, layout, error) && documents.open(folder, error) &&
           importDemoDocuments(*this, options.demoDocuments, error);
}

} // namespace documentserver
