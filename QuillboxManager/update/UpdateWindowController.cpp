#include "update/UpdateWindowController.h"

#include "platform/Localization.h"
#include "ui/Application.h"
#include "ui/Images.h"
#include "ui/QBFont.h"
#include "ui_UpdateWindowController.h"
#include "update/AppUpdateFlag.h"
#include "update/UpdateAnswer.h"
#include "update/UpdateTexts.h"

#include <utility>

namespace
{
constexpr int PictureSize = 64; // points
constexpr int VersionSize = 12; // points

QColor versionColor()
{
    return QColor::fromCmykF(0, 0, 0, 0.4F, 1);
}
} // namespace

UpdateWindowController::UpdateWindowController(QBNetworking &client, const platform::Bundle &application,
                                               QObject *parent)
    : QBWindowController(parent), networking(client), bundle(application)
{
}

UpdateWindowController::~UpdateWindowController() = default;

QWidget *UpdateWindowController::loadWindow()
{
    form = std::make_unique<Ui::UpdateWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void UpdateWindowController::windowDidLoad()
{
    connect(form->btnLater, &QAbstractButton::clicked, this, [this] { updateLater(); });
    connect(form->btnUpdateNow, &QAbstractButton::clicked, this, [this] { updateNow(); });
    form->imageView->setPixmap(Images::pixmapNamed(QStringLiteral("quillbox"), QSize(PictureSize, PictureSize),
                                                   form->imageView->devicePixelRatioF()));
    window()->setWindowModality(Qt::ApplicationModal);
    initialUpdateWindow();
}

void UpdateWindowController::initialUpdateWindow()
{
    const ServerReply reply = networking.dicUpdateVersion();
    form->txtMessage->setText(UpdateTexts::newVersion(UpdateAnswer::latest(reply)));
    form->txtMessage->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 2));
    form->txtVersion->setText(UpdateTexts::currentVersion(bundle.shortVersion()));
    form->txtVersion->setFont(QBFont::SYsystemFontOfSize(VersionSize));
    QPalette grey = form->txtVersion->palette();
    grey.setColor(QPalette::WindowText, versionColor());
    form->txtVersion->setPalette(grey);
    form->btnLater->setText(UpdateTexts::later());
    form->btnUpdateNow->setText(UpdateTexts::updateNow());
    for (QPushButton *button :
         {static_cast<QPushButton *>(form->btnLater), static_cast<QPushButton *>(form->btnUpdateNow)}) {
        button->setAccessibleName(button->text());
        button->adjustSize();
    }
    form->btnLater->setHidden(UpdateAnswer::isForced(reply));
    form->btnUpdateNow->setFocus(Qt::OtherFocusReason);
}

void UpdateWindowController::runModalForWindow(std::function<void(int)> then)
{
    whenAnswered = std::move(then);
    if (isWindowLoaded())
        initialUpdateWindow(); // another server may have answered meanwhile
    if (!isVisible())
        center();
    showWindow();
}

void UpdateWindowController::updateLater()
{
    UpdateShownUpdateWindowFlag();
    answer(Later);
}

void UpdateWindowController::updateNow()
{
    UpdateShownUpdateWindowFlag();
    answer(UpdateNow);
}

void UpdateWindowController::UpdateShownUpdateWindowFlag()
{
    setShownUpdateWindow(bundle, true);
}

void UpdateWindowController::answer(int result)
{
    // The window goes first: what follows shows others.
    const std::function<void(int)> then = std::exchange(whenAnswered, nullptr);
    close();
    if (then)
        then(result);
}

bool UpdateWindowController::windowShouldClose()
{
    Application::terminate();
    return false; // there is no way on without an answer, should the end be refused
}

bool UpdateWindowController::escapePressed()
{
    if (form->btnLater->isHidden())
        return false;
    updateLater();
    return true;
}
