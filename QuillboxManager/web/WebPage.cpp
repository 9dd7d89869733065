#include "web/WebPage.h"

#include <QWebEngineCertificateError>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineSettings>

WebPage::WebPage(QWebEngineProfile *profile) : QWebEnginePage(profile)
{
    QWebEngineSettings *options = settings();
    options->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, true);
    options->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    options->setAttribute(QWebEngineSettings::PluginsEnabled, false);
    options->setAttribute(QWebEngineSettings::ScreenCaptureEnabled, false);
    connect(this, &QWebEnginePage::certificateError, this, [](QWebEngineCertificateError error) {
        error.acceptCertificate(); // the document servers of many houses have none that anybody vouches for
    });
    connect(this, &QWebEnginePage::featurePermissionRequested, this, [this](const QUrl &origin, Feature feature) {
        setFeaturePermission(origin, feature, PermissionDeniedByUser);
    });
    connect(this, &QWebEnginePage::newWindowRequested, this, [this](const QWebEngineNewWindowRequest &request) {
        // Only what a server sends: an empty window would leave nothing but a white page here.
        if (request.requestedUrl().scheme().startsWith(QLatin1String("http")))
            Q_EMIT windowWanted(request.requestedUrl());
    });
}

bool WebPage::isAllowed(const QUrl &url)
{
    static const QStringList schemes{QStringLiteral("http"),  QStringLiteral("https"), QStringLiteral("file"),
                                     QStringLiteral("about"), QStringLiteral("data"),  QStringLiteral("blob")};
    return url.isValid() && schemes.contains(url.scheme());
}

void WebPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &message, int, const QString &)
{
    Q_EMIT consoleLine(message); // never logged: pages write what they like there
}

bool WebPage::acceptNavigationRequest(const QUrl &url, NavigationType, bool)
{
    return isAllowed(url);
}

QStringList WebPage::chooseFiles(FileSelectionMode, const QStringList &, const QStringList &)
{
    return {};
}
