#include "platform/Host.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>

#include <cstdio>

/// The other process of the tests.
///   peer post NAME KEY VALUE       posts a distributed notification and ends at once
///   peer hand-over ARGUMENT...     what a second launch does; status 0 when it was handed over
///   peer write-defaults FILE       writes a growing number for ever, a line on standard output for each file written
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString command = arguments.value(1);
    if (command == QLatin1String("post")) {
        platform::host().distributed.post(arguments.value(2), {{arguments.value(3), arguments.value(4)}});
        std::_Exit(0);
    }
    if (command == QLatin1String("hand-over"))
        return platform::host().launchEvents.handOver(arguments.mid(2)) ? 0 : 1;
    if (command == QLatin1String("write-defaults")) {
        platform::UserDefaults defaults(arguments.value(2));
        for (qint64 number = 1;; ++number) {
            defaults.set(QStringLiteral("number"), number);
            defaults.set(QStringLiteral("text"), QString(4096, QChar(static_cast<char16_t>(u'a' + number % 26))));
            if (!defaults.synchronize())
                return 1;
            std::printf("%lld\n", static_cast<long long>(number));
            std::fflush(stdout);
        }
    }
    return 64;
}
