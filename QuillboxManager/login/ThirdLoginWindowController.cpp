#include "login/ThirdLoginWindowController.h"

#include "login/ThirdLoginCalls.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"
#include "ui_ThirdLoginWindowController.h"

#include <QPointer>

#include <utility>

using platform::localizedString;

namespace
{
QString ownText(const QString &key)
{
    return localizedString(key, QStringLiteral("ThirdLoginWindowController"));
}

QString userNameScript()
{
    return QStringLiteral("document.getElementById(\"username\").value");
}

/// For the log. Pages may repeat the ticket in front of its own place, in the path.
QString withoutTicket(const QString &address, const QString &ticket)
{
    const QString shown = platform::redactedURL(address);
    return ticket.isEmpty() ? shown : QString(shown).replace(ticket, QStringLiteral("***"));
}

QBAlert::Alert alertOf(const QString &text, const QString &button)
{
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Warning, ownText(QStringLiteral("failed")), text);
    QBAlert::addButton(*alert, button);
    return alert;
}

QBAlert::Alert alertOf(const LoginAnswer &answer)
{
    const QString messages = QStringLiteral("Messages");
    const QString button = localizedString(QStringLiteral("OK"), messages);
    if (!answer.answered)
        return alertOf(localizedString(QStringLiteral("NoSession"), QStringLiteral("LoginWindowController")), button);
    const QString key = QString::number(answer.error.code());
    if (!platform::hasLocalizedString(key, messages))
        return QBAlert::defaultQBAlertWithShowsSuppressionButton(false, answer.error);
    return alertOf(localizedString(key, messages), button);
}
} // namespace

ThirdLoginWindowController::ThirdLoginWindowController(QBNetworking &client,
                                                       platform::NotificationCenter &notifications,
                                                       platform::WebBrowserMaker browserMaker, WebPanel::Opener opener,
                                                       QObject *parent)
    : WebWindowController(std::move(browserMaker), std::move(opener), parent), networking(client), center(notifications)
{
}

void ThirdLoginWindowController::initWithAuthURL(const QString &url, const QString &id)
{
    authURL = url;
    strAuthID = id;
}

void ThirdLoginWindowController::setupUi(QWidget *surface)
{
    Ui::ThirdLoginWindowController().setupUi(surface);
}

QString ThirdLoginWindowController::title() const
{
    return ownText(QStringLiteral("登录"));
}

void ThirdLoginWindowController::windowDidLoad()
{
    WebWindowController::windowDidLoad();
    connect(webView, &WebPanel::willSendRequest, this, &ThirdLoginWindowController::willSendRequest);
}

void ThirdLoginWindowController::loadThirdWebView()
{
    window();
    endAttempt();
    ThirdLoginCalls::readMatchUrl(networking, this, [this, number = attempt](const QString &match) {
        if (number != attempt)
            return;
        matchUrl = match;
        webView->load(QUrl(authURL, QUrl::StrictMode));
    });
}

void ThirdLoginWindowController::willSendRequest(const QUrl &url)
{
    const QString address = url.toString(QUrl::FullyEncoded);
    const ThirdLoginRules::Sighting sighting = ThirdLoginRules::recognise(address, matchUrl);
    if (sighting.kind == ThirdLoginRules::Sighting::Kind::Nothing)
        return;
    if (sighting.kind == ThirdLoginRules::Sighting::Kind::Ticket)
        platform::log(QStringLiteral("符合要求%1").arg(withoutTicket(address, sighting.ticket)));
    ++exchanges;
    webView->setWaiting(true);
    webView->evaluate(userNameScript(), this, [this, sighting, number = attempt](const QString &userName) {
        if (number == attempt)
            signIn(sighting, userName.isNull() ? QLatin1String("") : userName);
    });
}

void ThirdLoginWindowController::signIn(const ThirdLoginRules::Sighting &sighting, const QString &userName)
{
    // One after another: a sign-in that begins overtakes the one before it, and the second use of a ticket is refused.
    waiting.append({sighting, userName});
    if (waiting.size() == 1)
        exchangeNext();
}

void ThirdLoginWindowController::exchangeNext()
{
    const Exchange &next = waiting.first();
    ThirdLoginCalls::signIn(networking, this, next.sighting, next.userName, strAuthID,
                            [this, number = attempt](const LoginAnswer &answer) {
                                if (number == attempt)
                                    handleAnswer(answer);
                            });
}

void ThirdLoginWindowController::handleAnswer(const LoginAnswer &answer)
{
    --exchanges;
    waiting.removeFirst();
    if (!waiting.isEmpty())
        exchangeNext(); // whatever came of the one before
    const bool failed = !answer.answered || answer.error;
    if (failed && exchanges > 0)
        return; // the page has sent its ticket twice; the other sign-in decides
    endAttempt();
    if (failed) {
        showFailure(answer);
        return;
    }
    close();
    center.post(NotificationNames::loginSuccess()); // the shell may end this window in here
}

void ThirdLoginWindowController::showFailure(const LoginAnswer &answer)
{
    close();
    Application::activate();
    QBAlert::beginSheet(alertOf(answer), nullptr,
                        [guard = QPointer<ThirdLoginWindowController>(this), number = attempt](int) {
                            if (guard && guard->attempt == number)
                                guard->windowShouldClose();
                        });
}

void ThirdLoginWindowController::endAttempt()
{
    ++attempt;
    exchanges = 0;
    waiting.clear();
    webView->unload();
}

bool ThirdLoginWindowController::windowShouldClose()
{
    endAttempt();
    center.post(NotificationNames::closeThirdLoginWindowShowLoginWindow());
    return true;
}
