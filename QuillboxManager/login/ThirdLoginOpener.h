#pragma once

#include <QString>

/// Opens the single-sign-on window of an external authenticator. Main thread.
class ThirdLoginOpener
{
public:
    virtual ~ThirdLoginOpener() = default;
    /// `authURL` is http or https. False when no window was opened; the user has been told why then.
    virtual bool open(const QString &authURL, const QString &authID) = 0;

    /// Tells the user that this installation has no browser for the sign-in page; opens nothing.
    static ThirdLoginOpener &withoutBrowser();
};

/// "platform=mac" added to the query of an authenticator's address; null unless it is http or https.
QString thirdLoginURL(const QString &authServer);
