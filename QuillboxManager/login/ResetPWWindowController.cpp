#include "login/ResetPWWindowController.h"

#include "login/ResetPWRules.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "state/PersistentKeys.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"
#include "ui_ResetPWWindowController.h"

#include <QPointer>

#include <utility>

using platform::localizedString;

namespace
{
QString messageHandler()
{
    return QStringLiteral("showMessage");
}
} // namespace

ResetPWWindowController::ResetPWWindowController() : ResetPWWindowController(Collaborators()) {}

ResetPWWindowController::ResetPWWindowController(const Collaborators &collaborators, QObject *parent)
    : WebWindowController(collaborators.browser, collaborators.openExternally, parent), with(collaborators)
{
    alertTimer.setSingleShot(true);
    connect(&alertTimer, &QTimer::timeout, this, [this] { showSwitchedOff(); });
}

void ResetPWWindowController::setupUi(QWidget *surface)
{
    Ui::ResetPWWindowController().setupUi(surface);
}

QString ResetPWWindowController::title() const
{
    return localizedString(QStringLiteral("重置密码"));
}

void ResetPWWindowController::windowDidLoad()
{
    WebWindowController::windowDidLoad();
    webView->addScriptMessageHandler(messageHandler());
    connect(webView, &WebPanel::navigationFinished, this, [this](bool ok) {
        if (ok)
            didFinishNavigation();
    });
    connect(webView, &WebPanel::scriptMessage, this, &ResetPWWindowController::didReceiveScriptMessage);
    readServerConfig([this](const ServerReply &serverConfig) { begin(serverConfig); });
}

void ResetPWWindowController::readServerConfig(std::function<void(const ServerReply &)> then)
{
    platform::inBackground(
        this, [&client = with.networking] { return client.getServerConfig(); },
        [this, number = ++navigation, then = std::move(then)](const ServerReply &serverConfig) {
            if (number == navigation && !isOver)
                then(serverConfig);
        });
}

void ResetPWWindowController::begin(const ServerReply &serverConfig)
{
    if (serverConfig && ResetPWRules::isSwitchedOff(*serverConfig))
        alertTimer.start(with.alertDelay);
    else
        webView->load(QUrl::fromLocalFile(with.page));
}

void ResetPWWindowController::didFinishNavigation()
{
    readServerConfig([this](const ServerReply &serverConfig) {
        const QString script = ResetPWRules::initScript(
            platform::preferredLanguages().constFirst(), with.defaults.string(PersistentKeys::serverID()),
            serverConfig.value_or(QJsonObject()), with.networking.isHttpsServer(), with.globe.server().authPort);
        if (!script.isNull())
            webView->evaluate(script, this, [](const QString &) {});
    });
}

void ResetPWWindowController::didReceiveScriptMessage(const QString &name, const QVariant &body)
{
    const bool isDone = body.typeId() == QMetaType::QString && body.toString() == QLatin1String("resetDone");
    if (isOver || name != messageHandler() || !isDone)
        return;
    with.userNotifications.schedule(title(), localizedString(QStringLiteral("密码重置成功，请登录")));
    backToLogin();
}

void ResetPWWindowController::showSwitchedOff()
{
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Warning, localizedString(QStringLiteral("警告")),
                                         localizedString(QStringLiteral("管理员已关闭忘记密码重置功能")));
    QBAlert::addButton(*alert, localizedString(QStringLiteral("确定")));
    Application::activate(window());
    QBAlert::beginSheet(std::move(alert), window(), [guard = QPointer<ResetPWWindowController>(this)](int) {
        if (guard && !guard->isOver)
            guard->backToLogin();
    });
}

/// The shell may end this window in here.
void ResetPWWindowController::backToLogin()
{
    isOver = true;
    alertTimer.stop();
    webView->unload();
    with.center.post(NotificationNames::wantLoginWindow(),
                     QVariantMap{{QStringLiteral("from"), QStringLiteral("resetWC")}});
}

bool ResetPWWindowController::windowShouldClose()
{
    if (!isOver)
        backToLogin();
    return true;
}
