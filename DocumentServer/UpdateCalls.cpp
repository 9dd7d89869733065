#include "CallTable.h"

#include <QFileInfo>
#include <QUrl>
#include <QVersionNumber>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
QJsonObject checkVersion(const Call &call)
{
    const Scenario &scenario = *call.scenario;
    const QString platform = requiredText(call.body, "platform", 32);
    const QString version = requiredText(call.body, "version", 64);
    if (!scenario.flag("update.known") || platform != "mac"_L1)
        throw ApiError{NoUpdateInformation, {}, {}, {}};
    const QString latest = scenario.text("update.latest");
    // Whoever has the newest version is never asked to update to it again.
    const bool newest = !latest.isEmpty() && QVersionNumber::fromString(version) >= QVersionNumber::fromString(latest);
    QString address = scenario.text("update.downloadurl");
    if (address.isEmpty() && !scenario.text("update.file").isEmpty())
        address = "/download/"_L1 + QFileInfo(scenario.text("update.file")).fileName();
    return {{u"result"_s, newest ? u"ok"_s : scenario.text("update.result")},
            {u"latest"_s, latest.isEmpty() ? version : latest},
            {u"downloadurl"_s, address}};
}

/// The installer's address under the name by which the client reached this server.
QJsonObject downloadAddress(const Call &call, Services &services)
{
    requiredNumber(call.body, "osType", 0, 1000);
    const QString host = requiredText(call.body, "reqhost", 255);
    const bool https = requiredFlag(call.body, "usehttps");
    const QString fixed = call.scenario->text("update.downloadurl");
    const QString file = call.scenario->text("update.file");
    if (file.isEmpty() && !fixed.isEmpty())
        return {{u"URL"_s, fixed}};
    const int port = https ? services.httpsPort : services.httpPort;
    if (file.isEmpty() || port <= 0)
        throw ApiError{NoUpdateInformation, {}, {}, {}};
    QUrl url;
    url.setScheme(https ? u"https"_s : u"http"_s);
    url.setHost(host);
    url.setPort(port);
    url.setPath("/download/"_L1 + QFileInfo(file).fileName());
    if (!url.isValid() || url.host().isEmpty())
        throw ApiError{IllegalParameter, {}, u"parameter: reqhost"_s, {}};
    return {{u"URL"_s, url.toString(QUrl::FullyEncoded)}};
}
} // namespace

void addUpdateCalls(CallTable *table, Services &services)
{
    table->insert(u"update.check"_s, {checkVersion, false});
    table->insert(u"update.download"_s,
                  {[&services](const Call &call) { return downloadAddress(call, services); }, false});
}

} // namespace documentserver
