#pragma once

#include "ui/QBWindowController.h"

#include <memory>

namespace Ui
{
class updateProgressWindowController;
}

/// How far the download of the new version is. Main thread. Closing the window by its close button ends the
/// application.
class updateProgressWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit updateProgressWindowController(QObject *parent = nullptr);
    ~updateProgressWindowController() override;

    void initialUpdateProgressWindow();
    /// 0 to 100; what lies outside counts as the nearest end.
    void setProgress(double percent);

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;

private:
    std::unique_ptr<Ui::updateProgressWindowController> form;
};
