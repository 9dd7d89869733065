#include "login/LoginBoxColours.h"

#include "login/LoginWindowView.h"
#include "state/NotificationNames.h"

LoginBoxColours::LoginBoxColours(LoginWindowView &coloured, platform::NotificationCenter &center, QObject *parent)
    : QObject(parent), view(coloured)
{
    using Handler = void (LoginBoxColours::*)(int);
    const auto observe = [this, &center](const QString &name, Handler handler) {
        center.addObserver(this, name, [this, handler](const platform::Notification &notification) {
            (this->*handler)(notification.userInfo.value(QStringLiteral("tag")).toInt());
        });
    };
    observe(NotificationNames::userActive(), &LoginBoxColours::changeUserBoxActive);
    observe(NotificationNames::userDeactive(), &LoginBoxColours::changeUserBoxDeactive);
    observe(NotificationNames::passwordsActive(), &LoginBoxColours::changePasswordsBoxActive);
    observe(NotificationNames::passwordsDeactive(), &LoginBoxColours::changePasswordsBoxDeactive);
}

void LoginBoxColours::colourBox(int tag, bool active)
{
    if (tag == 111)
        view.setBoxActive(LoginWindowView::Box::User, active);
    else if (tag == 113)
        view.setBoxActive(LoginWindowView::Box::Passwords, active);
    else if (tag == 112 || tag == 114)
        view.setBoxActive(LoginWindowView::Box::Vcode, active);
}
