#pragma once

#include <QString>

/// Opens the single-sign-on window of an external authenticator. Main thread.
class ThirdLoginOpener
{
public:
    virtual ~ThirdLoginOpener() = default;
    /// `authURL` is http or https. False when no window was opened; the user has been told why then.
    virtual bool open(const QString &authURL, const QString &authID) = 0;
};
