#include "Arguments.h"
#include "CompanionService.h"
#include "CompanionStrings.h"
#include "ManagerWatch.h"
#include "StopSignals.h"

#include "platform/Host.h"
#include "platform/Log.h"
#include "state/QBGlobeInformation.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    StopSignals::block();
    const QCoreApplication application(argc, argv);
    const std::optional<qint64> manager = managerProcessId(QCoreApplication::arguments().mid(1));
    if (!manager) {
        platform::log(QStringLiteral("FUSEService: the one argument is the process id of the manager"));
        return CompanionStrings::BadArguments;
    }
    ManagerWatch watch;
    if (!watch.watch(*manager)) {
        platform::log(QStringLiteral("FUSEService: there is no manager %1").arg(*manager));
        return CompanionStrings::NoManager;
    }
    const StopSignals signals;
    platform::Host &host = platform::host();
    CompanionService service(QBGlobeInformation::sharedGlobeInformation(), host.distributed,
                             host.folders.temporary() + u'/' + CompanionStrings::socketName());
    QObject::connect(&watch, &ManagerWatch::managerEnded, &application, &QCoreApplication::quit);
    QObject::connect(&signals, &StopSignals::stopRequested, &application, &QCoreApplication::quit);
    QObject::connect(&service, &CompanionService::stopRequested, &application, &QCoreApplication::quit);
    if (const int failure = service.start())
        return failure;
    return QCoreApplication::exec();
}
