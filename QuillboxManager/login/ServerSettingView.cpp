#include "login/ServerSettingView.h"

#include "files/Branding.h"
#include "login/FocusHandOver.h"
#include "login/MessageLine.h"
#include "login/PortValidator.h"
#include "login/ReturnKeyFilter.h"
#include "login/ServerAddressRules.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "ui/QBFont.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"
#include "ui/WindowShake.h"
#include "ui_ServerSettingWindowController.h"

using platform::localizedString;

namespace
{
constexpr int AddressTag = 1;
constexpr int PortTag = 2;

QString ownText(const char *key)
{
    return localizedString(QLatin1String(key), QStringLiteral("ServerSettingWindowController"));
}
} // namespace

ServerSettingView::ServerSettingView(const Branding &branding, platform::NotificationCenter &center)
    : form(std::make_unique<Ui::ServerSettingWindowController>())
{
    form->setupUi(this);
    portFilter = new PortValidator(*form->txtAuthPort);
    indicator = new QBSpinner(form->btnConfirm);
    form->btnConfirm->applyBranding(branding);
    setUpControls();
    observeFocus(center);
    initialUI();
    setBusy(Busy::No);
    hideMessage();
}

ServerSettingView::~ServerSettingView()
{
    hide(); // a field that loses the focus tells us so: now, while there is someone to listen
}

void ServerSettingView::setUpControls()
{
    connect(form->btnConfirm, &QAbstractButton::clicked, this, &ServerSettingView::confirmed);
    connect(form->btnCancel, &QAbstractButton::clicked, this, &ServerSettingView::cancelled);
    auto *returnKey = new ReturnKeyFilter(
        [this](QObject *) {
            const bool valid = !isBusy && validateInputs();
            if (valid)
                Q_EMIT confirmed();
            return valid;
        },
        this);
    for (QLineEdit *field : {form->txtServerAddress, form->txtAuthPort}) {
        returnKey->watch(field);
        connect(field, &QLineEdit::textChanged, this, &ServerSettingView::refreshComfirmButton);
        connect(field, &QLineEdit::textEdited, this, &ServerSettingView::hideMessage);
    }
}

void ServerSettingView::initialUI()
{
    form->txtHeading->setText(ownText("Heading.title"));
    form->txtHeading->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 5));
    form->txtServerAddressTip->setText(ownText("ServerAddressTitle"));
    form->txtAuthPortTip->setText(ownText("AppPortTitle"));
    form->txtServerAddress->setAccessibleName(form->txtServerAddressTip->text());
    form->txtAuthPort->setAccessibleName(form->txtAuthPortTip->text());
    form->txtServerAddressTip->setBuddy(form->txtServerAddress);
    form->txtAuthPortTip->setBuddy(form->txtAuthPort);
    form->btnCancel->setText(localizedString(QStringLiteral("取消")));
    form->btnCancel->setAccessibleName(form->btnCancel->text());
    form->btnConfirm->setAccessibleName(localizedString(QStringLiteral("确定")));
    for (QBBox *box : {form->boxServerAddress, form->boxAuthPort, form->boxFilePort}) {
        box->setCornerRadius(StyleKit::CornerRadius);
        box->setFillColor(Qt::white);
    }
    form->boxFilePort->hide(); // one port serves everything
    form->txtServerAddress->setFocus(Qt::OtherFocusReason);
}

void ServerSettingView::observeFocus(platform::NotificationCenter &center)
{
    const auto observe = [this, &center](const QString &name, const QString &key, bool active) {
        center.addObserver(this, name, [this, key, active](const platform::Notification &notification) {
            colourBox(notification.userInfo.value(key).toInt(), active);
        });
    };
    observe(NotificationNames::serverSettingTextFieldActive(), QStringLiteral("Active"), true);
    observe(NotificationNames::serverSettingTextFieldDeactive(), QStringLiteral("Deactive"), false);
}

void ServerSettingView::colourBox(int tag, bool active)
{
    QBBox *box = tag == AddressTag ? form->boxServerAddress : tag == PortTag ? form->boxAuthPort : nullptr;
    const QBTextField *field = tag == AddressTag ? form->txtServerAddress : form->txtAuthPort;
    if (box)
        box->setBorderColor(active ? field->activeColor() : field->inactiveColor());
}

void ServerSettingView::showServer(const QString &address, const QString &port)
{
    if (!address.isEmpty())
        form->txtServerAddress->setText(address);
    if (!port.isEmpty())
        portFilter->setStoredText(port);
}

QString ServerSettingView::address() const
{
    return form->txtServerAddress->text();
}

QString ServerSettingView::port() const
{
    return form->txtAuthPort->text();
}

bool ServerSettingView::validateInputs() const
{
    return ServerAddressRules::validateInputs(address(), port());
}

bool ServerSettingView::checkLegalServerAddress()
{
    using ServerAddressRules::AddressCheck;
    switch (ServerAddressRules::checkLegalServerAddress(address())) {
    case AddressCheck::InputDomainError:
        showMessageKey(QStringLiteral("InputDomainError"), true);
        return false;
    case AddressCheck::InputIPError:
        showMessageKey(QStringLiteral("InputIPError"), true);
        return false;
    case AddressCheck::Legal:
        break;
    }
    return true;
}

void ServerSettingView::setBusy(Busy busy)
{
    isBusy = busy != Busy::No;
    indicator->setVisible(isBusy);
    form->btnConfirm->setText(isBusy ? QString() : localizedString(QStringLiteral("确定")));
    form->txtServerAddress->setReadOnly(isBusy);
    form->txtAuthPort->setReadOnly(isBusy);
    if (busy == Busy::Yes)
        FocusHandOver::disable(form->btnCancel, form->txtServerAddress);
    else if (!isBusy)
        form->btnCancel->setEnabled(true);
    if (isBusy)
        FocusHandOver::disable(form->btnConfirm, form->txtServerAddress);
    refreshComfirmButton();
}

void ServerSettingView::refreshComfirmButton()
{
    form->btnConfirm->setEnabled(!isBusy && validateInputs());
}

void ServerSettingView::showMessage(const QString &text, bool isError)
{
    if (text.isEmpty())
        return;
    MessageLine::show(form->txtMessage, text, isError ? MessageLine::Kind::Error : MessageLine::Kind::Status);
    if (isError)
        WindowShake::shake(window());
}

void ServerSettingView::showMessageKey(const QString &key, bool isError)
{
    showMessage(localizedString(key, QStringLiteral("Messages")), isError);
}

void ServerSettingView::hideMessage()
{
    MessageLine::clear(form->txtMessage);
}
