#include "web/EngineBrowser.h"

#include "platform/Localization.h"

#include <QTimer>
#include <QWebEngineLoadingInfo>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

namespace
{
constexpr std::chrono::seconds AnswerTime{2};

QWebEngineScript script(const QString &name, const QString &source, QWebEngineScript::InjectionPoint when,
                        QWebEngineScript::ScriptWorldId world)
{
    QWebEngineScript made;
    made.setName(name);
    made.setSourceCode(source);
    made.setInjectionPoint(when);
    made.setWorldId(world);
    made.setRunsOnSubFrames(false);
    return made;
}
} // namespace

EngineBrowser::EngineBrowser()
    : page(&profile), blankPages(&page), browserView(new QWebEngineView), questions(std::make_unique<QObject>())
{
    profile.setUrlRequestInterceptor(&requests);
    profile.setHttpAcceptLanguage(platform::preferredLanguages().join(QLatin1Char(',')));
    page.setBackgroundColor(Qt::white);
    browserView->setPage(&page);
    browserView->setContextMenuPolicy(Qt::NoContextMenu);
    installScripts();
    connectPage();
}

EngineBrowser::~EngineBrowser()
{
    questions.reset(); // the page answers what is open when it ends
    page.disconnect(this);
    requests.disconnect(this);
    delete browserView;
}

void EngineBrowser::connectPage()
{
    connect(&requests, &RequestWatch::seen, this, &WebBrowser::willSendRequest);
    connect(&page, &QWebEnginePage::urlChanged, &requests, &RequestWatch::addressChanged);
    connect(&page, &QWebEnginePage::loadingChanged, this, &EngineBrowser::loadingChanged);
    connect(&page, &WebPage::consoleLine, this, &EngineBrowser::readLine);
    connect(&page, &WebPage::windowWanted, this, [this](const QUrl &url) {
        requests.expect(url);
        page.load(url);
    });
    connect(&page, &QWebEnginePage::renderProcessTerminated, this,
            [this](QWebEnginePage::RenderProcessTerminationStatus status, int code) {
                if (status != QWebEnginePage::NormalTerminationStatus)
                    fail(Failure::Crash, QStringLiteral("the process of the page ended with %1").arg(code));
            });
    connect(&blankPages, &BlankPageWatch::blank, this, [this] {
        page.triggerAction(QWebEnginePage::Stop);
        fail(Failure::NoAnswer, QStringLiteral("nothing was shown in time"));
    });
}

void EngineBrowser::load(const QUrl &url)
{
    wanted = url;
    failing = false;
    blankPages.end();
    if (!WebPage::isAllowed(url)) {
        QTimer::singleShot(0, this, [this] { fail(Failure::LoadError, QStringLiteral("no address of a page")); });
        return;
    }
    blankPages.begin(patience);
    requests.expect(url);
    page.load(url);
}

void EngineBrowser::reload()
{
    load(url());
}

void EngineBrowser::stop()
{
    blankPages.end();
    page.triggerAction(QWebEnginePage::Stop);
}

QUrl EngineBrowser::url() const
{
    return page.url().isEmpty() ? wanted : page.url();
}

void EngineBrowser::evaluate(const QString &source, std::function<void(const QString &)> then)
{
    // Whoever is first answers: the page, or the clock when the page is too busy or gone.
    auto waiting = std::make_shared<std::function<void(const QString &)>>(std::move(then));
    const auto answer = [guard = QPointer<QObject>(questions.get()), waiting](const QString &value) {
        const auto once = std::exchange(*waiting, {});
        if (guard && once)
            once(value);
    };
    QTimer::singleShot(AnswerTime, questions.get(), [answer] { answer(QString()); });
    page.runJavaScript(source, QWebEngineScript::MainWorld,
                       [answer](const QVariant &value) { answer(value.isValid() ? value.toString() : QString()); });
}

void EngineBrowser::addScriptMessageHandler(const QString &name)
{
    if (bridge.addHandler(name))
        installScripts();
}

void EngineBrowser::installScripts()
{
    QWebEngineScriptCollection &scripts = page.scripts();
    scripts.clear();
    scripts.insert(script(QStringLiteral("handlers"), bridge.handlerScript(), QWebEngineScript::DocumentCreation,
                          QWebEngineScript::MainWorld));
    scripts.insert(script(QStringLiteral("ready"), bridge.readyScript(), QWebEngineScript::DocumentReady,
                          QWebEngineScript::ApplicationWorld));
}

void EngineBrowser::readLine(const QString &text)
{
    const std::optional<ScriptBridge::Line> line = bridge.read(text);
    if (!line)
        return;
    switch (line->kind) {
    case ScriptBridge::Line::Kind::Ready:
        blankPages.look();
        Q_EMIT documentReady();
        break;
    case ScriptBridge::Line::Kind::Escape:
        Q_EMIT escapePressed();
        break;
    case ScriptBridge::Line::Kind::Message:
        Q_EMIT scriptMessage(line->handler, line->body);
        break;
    }
}

void EngineBrowser::loadingChanged(const QWebEngineLoadingInfo &info)
{
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        failing = false;
        ++navigation;
        blankPages.begin(patience);
        Q_EMIT navigationStarted();
        break;
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        Q_EMIT navigationFinished(true);
        break;
    case QWebEngineLoadingInfo::LoadStoppedStatus:
        Q_EMIT navigationFinished(false);
        break;
    case QWebEngineLoadingInfo::LoadFailedStatus:
        if (info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
            finishRefused(info.errorCode());
        else
            finishFailed(info.errorString());
        break;
    }
}

void EngineBrowser::finishRefused(int status)
{
    blankPages.ask([this, status, asked = navigation](bool shown) {
        if (asked != navigation)
            return;
        if (shown)
            Q_EMIT navigationFinished(true); // the server explains itself
        else
            finishFailed(QStringLiteral("HTTP status %1 without a page").arg(status));
    });
}

void EngineBrowser::finishFailed(const QString &text)
{
    Q_EMIT navigationFinished(false);
    fail(Failure::LoadError, text);
}

void EngineBrowser::fail(Failure failure, const QString &text)
{
    blankPages.end();
    if (std::exchange(failing, true))
        return;
    Q_EMIT failed(failure, text);
}
