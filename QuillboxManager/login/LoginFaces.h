#pragma once

#include "api/QBNetworking.h"
#include "login/LoginPlan.h"
#include "login/LoginWindowView.h"
#include "platform/UserDefaults.h"

class LoginAttempt;

/// From the server's configuration to the face on show: which fields there are, what stands in them, and what follows
/// without a press. Main thread; the configuration is fetched on the background pool and only the newest answer counts.
/// The collaborators must outlive the calls.
class LoginFaces final : public QObject
{
    Q_OBJECT
public:
    LoginFaces(QBNetworking &networking, platform::UserDefaults &defaults, const LoginAttempt &attempt);

    /// The surface to lay out; before anything else.
    void attach(LoginWindowView *view);
    /// What the configuration on show means.
    const LoginPlan &plan() const { return currentPlan; }
    void setNeedAutoLogin(bool need) { needAutoLogin = need; }

    /// Reads the configuration anew and lays the window out for it.
    void initialUI();
    void changeLoginThirdModeUI();
    void changeLoginNormalModeUI();

Q_SIGNALS:
    void pictureCodeWanted();
    /// The remembered account is filled in and may be submitted without a press.
    void signInWanted();
    /// On to the authenticator without a press.
    void redirectWanted();
    void laidOut();

private:
    void initialLogoUI();
    void fetchConfiguration();
    void showConfiguration(const ServerReply &reply);
    void showMissingConfiguration();
    void showNormalFace();
    void showThirdFace();
    void initialLoginNormalUI();
    void applySecondFactorRules();
    void applyPictureCodeRule();
    void performUserDefaults();

    QBNetworking &networking;
    platform::UserDefaults &defaults;
    const LoginAttempt &attempt;
    LoginWindowView *view = nullptr;
    ServerReply dicAuthInfo; ///< absent: the server could not be reached
    LoginPlan currentPlan;   ///< what dicAuthInfo means
    bool needAutoLogin = false;
    bool quitAutoLogin = false;
    int configurationNumber = 0; ///< of the newest initialUI; older answers are dropped
};
