#pragma once

#include "PageServer.h"
#include "platform/WebBrowser.h"

#include <QSignalSpy>
#include <QTest>
#include <QWidget>

#include <memory>

Q_DECLARE_METATYPE(platform::WebBrowser::Failure)

/// A browser out of the plug-in, shown, and what it tells.
struct BrowserScene {
    using WebBrowser = platform::WebBrowser;

    BrowserScene()
    {
        QString error;
        browser = platform::makeWebBrowser(QStringLiteral(PLUGIN_FOLDER), &error);
        if (!browser)
            qFatal("no browser: %s", qPrintable(error));
        QObject::connect(browser.get(), &WebBrowser::willSendRequest,
                         [this](const QUrl &url) { seen.append(url.toString().remove(server.url({}).toString())); });
        QObject::connect(browser.get(), &WebBrowser::navigationFinished, [this](bool ok) { finished.append(ok); });
        QObject::connect(browser.get(), &WebBrowser::documentReady, [this] { ++ready; });
        QObject::connect(browser.get(), &WebBrowser::failed,
                         [this](WebBrowser::Failure failure) { failures.append(failure); });
        browser->view()->resize(400, 300);
        browser->view()->show();
    }

    /// A path of this site, or an address elsewhere.
    void load(const QString &path) { browser->load(path.startsWith(u'/') ? server.url(path) : QUrl(path)); }
    /// Loads and waits for the end.
    bool open(const QString &path)
    {
        const qsizetype before = finished.size();
        load(path);
        return QTest::qWaitFor([&] { return finished.size() > before; }, 15'000) && finished.last();
    }
    /// The value of the script, once it is there.
    QString value(const QString &script)
    {
        auto answer = std::make_shared<std::optional<QString>>();
        browser->evaluate(script, [answer](const QString &text) { *answer = text; });
        if (!QTest::qWaitFor([&] { return answer->has_value(); }, 5000))
            qFatal("no answer to a script");
        return **answer;
    }
    QString text() { return value(QStringLiteral("document.body.innerText")); }

    PageServer &server = PageServer::shared();
    std::unique_ptr<WebBrowser> browser;
    QStringList seen; ///< addresses of requests, this site's without its name
    QList<bool> finished;
    QList<WebBrowser::Failure> failures;
    int ready = 0;
};
