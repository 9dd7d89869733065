#pragma once

#include "platform/NotificationCenter.h"

class LoginWindowView;

/// Colours the login window's boxes as their fields tell of the focus. Main thread; belongs to its parent, the view
/// must outlive it.
class LoginBoxColours final : public QObject
{
    Q_OBJECT
public:
    LoginBoxColours(LoginWindowView &view, platform::NotificationCenter &center, QObject *parent);

private:
    // The fields' tags: 111 the account box, 113 the password box, 112 and 114 the code box.
    void changeUserBoxActive(int tag) { colourBox(tag, true); }
    void changeUserBoxDeactive(int tag) { colourBox(tag, false); }
    void changePasswordsBoxActive(int tag) { colourBox(tag, true); }
    void changePasswordsBoxDeactive(int tag) { colourBox(tag, false); }
    void colourBox(int tag, bool active);

    LoginWindowView &view;
};
