#pragma once

#include <QWidget>

class MenuRowView;
class QMenu;

namespace shell
{

/// The status menu's rows in a small window, for desktops without a tray. A submenu unfolds below its entry. Main
/// thread.
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
    void addRow(QAction *action, QWidget *column);
    void addSubmenu(const QMenu &submenu, QWidget *column, MenuRowView *owner);

    QMenu &menu;
    QWidget *rows = nullptr;
};

} // namespace shell
