#pragma once

#include "files/Branding.h"
#include "login/LoginPlan.h"
#include "ui/animation/BasicAnimation.h"

#include <QWidget>

#include <memory>

class QBSpinner;

namespace Ui
{
class LoginWindowController;
}

/// The login window's surface: faces, boxes, pictures and texts, without any rule of signing in. Main thread.
class LoginWindowView final : public QWidget
{
    Q_OBJECT
public:
    enum class Face { Waiting, Normal, ThirdLogin };

    explicit LoginWindowView(const Branding &branding);
    ~LoginWindowView() override;

    Ui::LoginWindowController &form() { return *controls; }

    /// Empties `viewDisplay` and puts one face into it.
    void showFace(Face face);
    Face face() const { return shownFace; }
    /// The spinner of the waiting face.
    void setWaiting(bool waiting);

    void showMessage(const QString &message);
    void hideMessage();

    void showLogo();
    void showFieldTexts();
    void focusFirstField(bool accountKnown);

    /// Reveals the code box, with an animated re-layout, for one of its two fields.
    void setVcodeBox(LoginPlan::CodeField field);
    void hideVcodeBox();
    /// What the box is on show for, None while it is hidden.
    LoginPlan::CodeField codeField() const { return shownCodeField; }
    bool isVcodeBoxVisible() const { return shownCodeField != LoginPlan::CodeField::None; }
    /// Null: no picture to show, the button says how to get one.
    void showPicture(const QImage &picture);

    /// While submitting the fields keep their texts and the login button turns a spinner instead of its title.
    void setSubmitting(bool submitting);

    enum class Box { User, Passwords, Vcode };
    void setBoxActive(Box box, bool active);

    /// Null: the button keeps its title.
    void setThirdLoginTitle(const QString &title);

protected:
    bool focusNextPrevChild(bool next) override;

private:
    void setUpControls();
    void setUpTexts();
    void setUpAccessibility();
    void keepCodeFieldsOrder();

    const Branding branding;
    std::unique_ptr<Ui::LoginWindowController> controls;
    QBSpinner *loginIndicator = nullptr; ///< over the login button, made on first use
    QBSpinner *waitingIndicator = nullptr;
    BasicAnimation reveal; ///< height of the code box
    Face shownFace = Face::Waiting;
    LoginPlan::CodeField shownCodeField = LoginPlan::CodeField::None;
};
