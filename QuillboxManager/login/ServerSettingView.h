#pragma once

#include "platform/NotificationCenter.h"

#include <QWidget>

#include <memory>

class Branding;
class PortValidator;
class QBSpinner;

namespace Ui
{
class ServerSettingWindowController;
}

/// The server-settings window's surface: fields, buttons and the message line, without any rule of reaching a server.
/// Main thread.
class ServerSettingView final : public QWidget
{
    Q_OBJECT
public:
    ServerSettingView(const Branding &branding, platform::NotificationCenter &center);
    ~ServerSettingView() override;

    void initialUI();
    /// Puts what is stored into the fields; an empty text leaves its field as it is.
    void showServer(const QString &address, const QString &port);
    QString address() const;
    QString port() const;

    /// May what is typed be confirmed?
    bool validateInputs() const;
    /// False, and the reason shown, when the address can be none.
    bool checkLegalServerAddress();

    enum class Busy { No, MayCancel, Yes };
    /// While busy the fields keep their texts and the confirm button turns a spinner instead of its title.
    void setBusy(Busy busy);

    /// Errors are red and shake the window; an empty text changes nothing.
    void showMessage(const QString &text, bool isError);
    /// A key of the table "Messages".
    void showMessageKey(const QString &key, bool isError);
    void hideMessage();

Q_SIGNALS:
    /// By the button, or by Return in a field with inputs that may be confirmed.
    void confirmed();
    void cancelled();

private:
    void setUpControls();
    void observeFocus(platform::NotificationCenter &center);
    void colourBox(int tag, bool active);
    void refreshComfirmButton();

    std::unique_ptr<Ui::ServerSettingWindowController> form;
    PortValidator *portFilter; ///< owned by its field
    QBSpinner *indicator;      ///< owned by its button
    bool isBusy = false;
};
