#include "update/updateProgressWindowController.h"

#include "ui/Application.h"
#include "ui/QBFont.h"
#include "ui_updateProgressWindowController.h"
#include "update/UpdateTexts.h"

#include <algorithm>

updateProgressWindowController::updateProgressWindowController(QObject *parent) : QBWindowController(parent) {}

updateProgressWindowController::~updateProgressWindowController() = default;

QWidget *updateProgressWindowController::loadWindow()
{
    form = std::make_unique<Ui::updateProgressWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void updateProgressWindowController::windowDidLoad()
{
    initialUpdateProgressWindow();
}

void updateProgressWindowController::initialUpdateProgressWindow()
{
    form->txtMsg->setText(UpdateTexts::updating());
    form->txtMsg->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 2));
    form->qbProgressIndicator->setAccessibleName(form->txtMsg->text());
}

void updateProgressWindowController::setProgress(double percent)
{
    window();
    form->qbProgressIndicator->setValue(static_cast<int>(std::clamp(percent, 0.0, 100.0)));
}

bool updateProgressWindowController::windowShouldClose()
{
    Application::terminate();
    return false; // the download goes on, should the end be refused
}
