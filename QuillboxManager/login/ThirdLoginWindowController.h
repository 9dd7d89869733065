#pragma once

#include "api/QBNetworking.h"
#include "login/LoginCalls.h"
#include "login/ThirdLoginRules.h"
#include "login/WebWindowController.h"
#include "platform/NotificationCenter.h"

/// The window with an external authenticator's sign-in page. It watches the page's requests for the ticket and signs in
/// with it. Main thread; server calls run on the background pool, and whatever belongs to an attempt that has ended is
/// dropped. Closing the window leads back to the login window. The collaborators must outlive the calls.
class ThirdLoginWindowController final : public WebWindowController
{
    Q_OBJECT
public:
    explicit ThirdLoginWindowController(
        QBNetworking &networking = QBNetworking::sharedNetworking(),
        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter(),
        platform::WebBrowserMaker maker = {}, WebPanel::Opener openExternally = {}, QObject *parent = nullptr);

    /// The page (http or https) and the authenticator of the next attempts.
    void initWithAuthURL(const QString &authURL, const QString &authID);
    /// Begins an attempt: reads the return address from the server's configuration, then loads the page.
    void loadThirdWebView();

protected:
    void setupUi(QWidget *surface) override;
    QString title() const override;
    void windowDidLoad() override;
    bool isResizable() const override { return true; }
    bool windowShouldClose() override;

private:
    void willSendRequest(const QUrl &url);
    void signIn(const ThirdLoginRules::Sighting &sighting, const QString &userName);
    void exchangeNext();
    void handleAnswer(const LoginAnswer &answer);
    void showFailure(const LoginAnswer &answer);
    /// Nothing of the attempt so far concerns anyone any more.
    void endAttempt();

    QBNetworking &networking;
    platform::NotificationCenter &center;
    QString authURL;
    QString strAuthID;
    QString matchUrl;  ///< empty: the server names no return address
    int attempt = 0;   ///< number of the present one; later answers of others are dropped
    int exchanges = 0; ///< sign-ins of this attempt that have no answer yet

    struct Exchange {
        ThirdLoginRules::Sighting sighting;
        QString userName;
    };
    QList<Exchange> waiting; ///< those whose user name is known; the first is under way
};
