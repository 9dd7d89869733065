#include "install/InstallLock.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace install
{

InstallLock::InstallLock(const QString &folder, std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause(50);
    QDir().mkpath(folder);
    const QByteArray path = QFile::encodeName(folder + "/appInstall.lock"_L1);
    platform::FileDescriptor candidate(::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    QElapsedTimer waiting;
    waiting.start();
    while (candidate.isOpen()) {
        if (::flock(candidate.get(), LOCK_EX | LOCK_NB) == 0) {
            file = std::move(candidate);
            return;
        }
        if (waiting.hasExpired(patience.count()))
            return;
        std::this_thread::sleep_for(pause);
    }
}

} // namespace install
