#pragma once

#include "shell/MenuRow.h"

#include <QAbstractButton>

class QMenu;

/// An entry that draws itself, in a menu or in a window. A button, so that assistive technology can press it. Belongs
/// to its entry. Main thread.
class MenuRowView : public QAbstractButton
{
    Q_OBJECT
public:
    static constexpr int Height = 23; ///< points

    MenuRowView(MenuRow &menuItem, QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// The submenu is shown below the entry.
    void setUnfolded(bool isUnfolded);
    /// Moves the title to the right, as in a submenu that is shown below its entry.
    void setIndent(int points);

    void mouseEntered();
    void mouseExited();
    /// The entry was chosen: the menu closes, then the entry acts. One with a submenu opens it instead.
    void mouseUp();

Q_SIGNALS:
    void chosen();
    /// A click on an entry with a submenu that stands in no menu.
    void submenuWanted();

protected:
    /// Everything but the background of the highlighted look.
    virtual void drawRect(QPainter &painter) = 0;
    void drawTitle(QPainter &painter) const;

    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

    /// Room before and behind the title, in points.
    static constexpr int LeadingRoom = 41;
    static constexpr int TrailingRoom = 30;

    MenuRow &item;
    bool unfolded = false;

private:
    QMenu *surroundingMenu() const;
    void endTracking();
    void follow();
    void followMenu(const QAction *active);

    int indent = 0;
};
