#include "login/EmbeddedThirdLogin.h"

#include "login/ThirdLoginWindowController.h"

#include <utility>

EmbeddedThirdLogin::EmbeddedThirdLogin(Maker windowMaker)
    : maker(windowMaker ? std::move(windowMaker) : [] { return std::make_unique<ThirdLoginWindowController>(); })
{
}

EmbeddedThirdLogin::~EmbeddedThirdLogin() = default;

bool EmbeddedThirdLogin::open(const QString &authURL, const QString &authID)
{
    if (!thirdLoginWC)
        thirdLoginWC = maker();
    thirdLoginWC->initWithAuthURL(authURL, authID);
    thirdLoginWC->showWindow();
    thirdLoginWC->loadThirdWebView();
    return true;
}

QBWindowController *EmbeddedThirdLogin::window() const
{
    return thirdLoginWC.get();
}
