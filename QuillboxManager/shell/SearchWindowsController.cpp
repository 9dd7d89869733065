#include "shell/SearchWindowsController.h"

#include "channel/GDUnixSocketClient.h"
#include "channel/SocketMessage.h"
#include "login/FocusBorder.h"
#include "login/ReturnKeyFilter.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"
#include "ui/StyleKit.h"
#include "ui_SearchWindowsController.h"

#include <QKeyEvent>

SearchWindowsController::SearchWindowsController(const QString &path, QObject *parent)
    : QBWindowController(parent), socketPath(path)
{
}

SearchWindowsController::~SearchWindowsController()
{
    if (client)
        client->close();
}

QWidget *SearchWindowsController::loadWindow()
{
    form = std::make_unique<Ui::SearchWindowsController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void SearchWindowsController::windowDidLoad()
{
    initUI();
    auto *returnKey = new ReturnKeyFilter(
        [this](QObject *) {
            sendSearch();
            return true;
        },
        this);
    returnKey->watch(form->txtSearchInputField);
    form->txtSearchInputField->installEventFilter(this);
    client = GDUnixSocketClient::initWithSocketPath(socketPath);
    if (client)
        client->connectWithAutoRead(true, GDUnixSocketClient::ConnectCompletion());
}

void SearchWindowsController::initUI()
{
    window()->setWindowTitle(platform::localizedString(ShellStrings::searchTitle()));
    form->boxSearchInput->setCornerRadius(StyleKit::CornerRadius);
    form->boxSearchInput->setFillColor(Qt::white);
    FocusBorder::follow(form->txtSearchInputField, form->boxSearchInput);
    form->txtSearchInputField->setPlaceholderText(platform::localizedString(ShellStrings::searchPlaceholder()));
    form->txtSearchInputField->setAccessibleName(form->txtSearchInputField->placeholderText());
    form->txtSearchInputField->setFocus(Qt::OtherFocusReason);
    center();
}

void SearchWindowsController::sendSearch()
{
    const SocketMessage message{SocketMessage::statusBarSearching(), form->txtSearchInputField->text()};
    if (client)
        client->writeData(message.bytes(), GDUnixSocket::WriteCompletion());
}

bool SearchWindowsController::windowShouldClose()
{
    form->txtSearchInputField->setText(QStringLiteral(""));
    return true;
}

bool SearchWindowsController::eventFilter(QObject *watched, QEvent *event)
{
    const bool escape = event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
    if (watched != form->txtSearchInputField || !escape)
        return QBWindowController::eventFilter(watched, event);
    window()->close();
    return true;
}
