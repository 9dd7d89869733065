#include "login/WebPanel.h"

#include "platform/Host.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "ui/QBFont.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"
#include "ui_WebPanel.h"

#include <QPointer>
#include <QTimer>

#include <utility>

namespace
{
QString text(const QString &key)
{
    return platform::localizedString(key, QStringLiteral("WebPanel"));
}

bool isWebAddress(const QUrl &url)
{
    const QString scheme = url.scheme();
    return url.isValid() && !url.host().isEmpty() &&
           (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
}

QString keyOf(platform::WebBrowser::Failure failure)
{
    switch (failure) {
    case platform::WebBrowser::Failure::NoAnswer:
        return QStringLiteral("NoAnswer");
    case platform::WebBrowser::Failure::Crash:
        return QStringLiteral("Crash");
    case platform::WebBrowser::Failure::LoadError:
        break;
    }
    return QStringLiteral("LoadError");
}

platform::WebBrowserMaker standardMaker()
{
    return [](QString *error) { return platform::makeWebBrowser(error); };
}

void openInWorkspace(const QUrl &url)
{
    platform::host().workspace.openURL(url);
}
} // namespace

WebPanel::WebPanel(platform::WebBrowserMaker maker, Opener opener, QWidget *parent)
    : QWidget(parent), makeBrowser(maker ? std::move(maker) : standardMaker()),
      openExternally(opener ? std::move(opener) : Opener(openInWorkspace)), form(std::make_unique<Ui::WebPanel>())
{
    form->setupUi(this);
    auto *mark = new QBSpinner(form->loadingMark);
    mark->setColor(StyleKit::secondaryTextColor());
    mark->show();
    form->txtLoading->setText(text(QStringLiteral("loading")));
    form->txtFailureTitle->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 5));
    const std::pair<QAbstractButton *, QString> buttons[] = {{form->btnReload, QStringLiteral("reload")},
                                                             {form->btnOpenInBrowser, QStringLiteral("openInBrowser")},
                                                             {form->btnBack, QStringLiteral("back")}};
    for (const auto &[button, key] : buttons) {
        button->setText(text(key));
        button->setAccessibleName(button->text());
    }
    connect(form->btnReload, &QAbstractButton::clicked, this, [this] { reload(); });
    connect(form->btnOpenInBrowser, &QAbstractButton::clicked, this, [this] { openExternally(wanted); });
    connect(form->btnBack, &QAbstractButton::clicked, this, &WebPanel::backRequested);
    become(State::Empty);
}

WebPanel::~WebPanel()
{
    unload();
}

void WebPanel::applyBranding(const Branding &branding)
{
    form->btnReload->applyBranding(branding);
    form->btnOpenInBrowser->applyBranding(branding);
    form->btnBack->applyBranding(branding);
}

void WebPanel::addScriptMessageHandler(const QString &name)
{
    handlers.append(name);
    if (browser)
        browser->addScriptMessageHandler(name);
}

void WebPanel::load(const QUrl &url)
{
    wanted = url;
    isWaiting = false;
    if (!ensureBrowser())
        return;
    become(State::Loading);
    browser->load(url);
}

void WebPanel::reload()
{
    // A process that crashed leaves a view that is of no more use; a fresh browser serves every kind of failure.
    const QUrl again = wanted;
    unload();
    load(again);
}

void WebPanel::setWaiting(bool waiting)
{
    isWaiting = waiting;
    become(waiting ? State::Loading : State::Page);
}

void WebPanel::unload()
{
    isWaiting = false;
    endBrowser();
    become(State::Empty);
}

void WebPanel::endBrowser()
{
    if (!browser)
        return;
    // It may be its own signal that leads here.
    browser->disconnect(this);
    browser->stop();
    browser->view()->hide();
    browser->view()->setParent(nullptr);
    browser.release()->deleteLater();
    for (const auto &[question, then] : std::exchange(questions, {}))
        answerLater(then); // the page cannot any more
}

void WebPanel::evaluate(const QString &script, QObject *context, const Answer &then)
{
    const Answer guarded = [guard = QPointer<QObject>(context), then](const QString &value) {
        if (guard)
            then(value);
    };
    if (!browser) {
        answerLater(guarded);
        return;
    }
    const int question = ++lastQuestion;
    questions.emplace(question, guarded);
    browser->evaluate(script, [panel = QPointer<WebPanel>(this), question](const QString &value) {
        if (panel)
            panel->answer(question, value);
    });
}

void WebPanel::answer(int question, const QString &value)
{
    if (const auto asked = questions.extract(question))
        asked.mapped()(value);
}

void WebPanel::answerLater(const Answer &then)
{
    QTimer::singleShot(0, this, [then] { then(QString()); });
}

bool WebPanel::ensureBrowser()
{
    if (browser)
        return true;
    QString error;
    browser = makeBrowser(&error);
    if (!browser) {
        platform::log(QStringLiteral("no embedded browser: %1").arg(error));
        showFailure(QStringLiteral("NoPlugin"));
        Q_EMIT failed(error);
        return false;
    }
    for (const QString &name : std::as_const(handlers))
        browser->addScriptMessageHandler(name);
    connectBrowser();
    form->pageLayout->addWidget(browser->view());
    return true;
}

void WebPanel::connectBrowser()
{
    using platform::WebBrowser;
    WebBrowser *page = browser.get();
    connect(page, &WebBrowser::willSendRequest, this, &WebPanel::willSendRequest);
    connect(page, &WebBrowser::scriptMessage, this, &WebPanel::scriptMessage);
    connect(page, &WebBrowser::escapePressed, this, &WebPanel::escapePressed);
    connect(page, &WebBrowser::failed, this, &WebPanel::explain);
    connect(page, &WebBrowser::documentReady, this, &WebPanel::showPage);
    connect(page, &WebBrowser::navigationFinished, this, [this](bool ok) {
        if (ok)
            showPage();
        Q_EMIT navigationFinished(ok);
    });
}

void WebPanel::explain(platform::WebBrowser::Failure failure, const QString &reason)
{
    platform::log(QStringLiteral("web page failed: %1").arg(reason));
    if (failure != platform::WebBrowser::Failure::LoadError)
        endBrowser(); // stuck or dead; a page that cannot be loaded leaves the one before it, which may still answer
    if (!isWaiting)
        showFailure(keyOf(failure));
    Q_EMIT failed(reason);
}

void WebPanel::showPage()
{
    if (!isWaiting)
        become(State::Page);
}

void WebPanel::showFailure(const QString &messageKey)
{
    form->txtFailureTitle->setText(text(messageKey + QStringLiteral(".title")));
    form->txtFailure->setText(text(messageKey + QStringLiteral(".text")));
    form->btnOpenInBrowser->setVisible(isWebAddress(wanted));
    become(State::Failure);
    form->btnReload->setFocus(Qt::OtherFocusReason);
}

void WebPanel::become(State state)
{
    const bool appears = state != std::exchange(shown, state);
    switch (state) {
    case State::Empty:
    case State::Loading:
        form->faces->setCurrentWidget(form->faceLoading);
        break;
    case State::Page:
        form->faces->setCurrentWidget(form->facePage);
        if (browser && appears)
            browser->view()->setFocus(Qt::OtherFocusReason);
        break;
    case State::Failure:
        form->faces->setCurrentWidget(form->faceFailure);
        break;
    }
}
