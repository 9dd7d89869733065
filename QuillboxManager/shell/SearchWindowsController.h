#pragma once

#include "ui/QBWindowController.h"

#include <memory>

class GDUnixSocketClient;
namespace Ui
{
class SearchWindowsController;
}

/// One field for a shared link of a document. What is typed goes to the companion as it stands; the companion finds the
/// document and tells the user. Main thread; the socket is worked in the background.
class SearchWindowsController final : public QBWindowController
{
    Q_OBJECT
public:
    /// `socketPath`: where the companion listens. Connected once, when the window is made; failures stay silent.
    explicit SearchWindowsController(const QString &socketPath, QObject *parent = nullptr);
    ~SearchWindowsController() override;

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void initUI();
    void sendSearch();

    const QString socketPath;
    std::unique_ptr<Ui::SearchWindowsController> form;
    std::shared_ptr<GDUnixSocketClient> client;
};
