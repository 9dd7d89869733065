#pragma once

#include <QWidget>

class QMenu;

namespace shell
{

/// The status menu as a small window of buttons, for desktops without a tray. Main thread.
class MenuWindow : public QWidget
{
    Q_OBJECT
public:
    /// `menu` must outlive the window.
    explicit MenuWindow(QMenu &menu, QWidget *parent = nullptr);

    /// Fills the window anew and brings it to the front.
    void present();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void fill();
    void addButtons(const QMenu &from);

    QMenu &menu;
    QWidget *buttons = nullptr;
};

} // namespace shell
