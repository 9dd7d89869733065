#include "api/ClientServices.h"

#include "platform/Bundle.h"
#include "platform/Host.h"

using namespace Qt::StringLiterals;

namespace
{

QByteArray saltOfBundle()
{
    const QString configured = platform::Bundle::main().infoString(u"PasswordChangeSalt"_s);
    return configured.isEmpty() ? "qvxzt.kmn"_ba : configured.toUtf8();
}

} // namespace

ClientServices::ClientServices()
    : hardwareAddress([] { return platform::host().device.hardwareAddress(); }),
      encryptor([] { return MXRRSA::init(); }), version(platform::Bundle::main().shortVersion()),
      passwordChangeSalt(saltOfBundle()), isServiceRunning([] {
          return !platform::host().workspace.runningApplications(u"com.velto.FUSEService"_s).isEmpty();
      })
{
}

const ClientServices &ClientServices::shared()
{
    // Never destroyed: a background call may outlive the static objects of a process that quits.
    static const auto *const services = new ClientServices;
    return *services;
}
