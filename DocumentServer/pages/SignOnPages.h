#pragma once

#include "Page.h"

namespace documentserver
{

struct Services;

/// The pages of an identity provider, "/sso/STYLE": a form for account and password, and the way back to the client
/// with a ticket, in the style that the address names. There only while the scenario has "thirdauth". Any thread.
class SignOnPages
{
public:
    explicit SignOnPages(Services &all) : services(all) {}

    /// `place` is the path behind "/sso/".
    Reply answer(const QString &place, const PageRequest &request);

private:
    Reply form(const QString &style, const PageRequest &request, const QString &error) const;
    Reply signIn(const QString &style, const PageRequest &request);

    Services &services;
};

} // namespace documentserver
