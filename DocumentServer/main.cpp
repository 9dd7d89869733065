#include "Accounts.h"
#include "CommandLine.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace documentserver;

namespace
{
constexpr qint64 longestPassword = 1024;

int complain(const QString &text, int status)
{
    std::fprintf(stderr, "quillbox-server: %s\n", qPrintable(text));
    return status;
}

int addAccount(const CommandLine &line)
{
    QFile input;
    QString error;
    const QString folder = line.options.dataFolder;
    const bool ownFile = line.options.accountsFile.isEmpty();
    if (!input.open(stdin, QIODevice::ReadOnly))
        return complain(u"cannot read the password"_s, 1);
    const QByteArray password = input.readLine(longestPassword).trimmed();
    Accounts accounts;
    if (!QDir().mkpath(folder))
        return complain(u"cannot make %1"_s.arg(folder), 1);
    const QString file = ownFile ? folder + "/accounts.json"_L1 : line.options.accountsFile;
    if (!accounts.open(file, ownFile, &error) || !accounts.add(line.newAccount, password, &error))
        return complain(error, 1);
    return 0;
}

/// Blocks the ending signals before any thread starts, so that only the main thread, waiting for them, gets them.
sigset_t holdEndingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

int serve(const Options &options)
{
    const sigset_t signals = holdEndingSignals();
    Server server(options);
    QString error;
    if (!server.start(&error))
        return complain(error, 1);
    std::printf("ready http=%d https=%d\n", server.httpPort(), server.httpsPort());
    std::fflush(stdout);
    int received = 0;
    sigwait(&signals, &received);
    server.stop();
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    umask(077);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments().mid(1));
    if (!line.error.isEmpty())
        return complain(line.error + "; --help shows the options"_L1, 2);
    switch (line.task) {
    case CommandLine::Task::Help:
        std::fputs(qPrintable(helpText()), stdout);
        return 0;
    case CommandLine::Task::AddAccount:
        return addAccount(line);
    case CommandLine::Task::Serve:
        break;
    }
    return serve(line.options);
}
