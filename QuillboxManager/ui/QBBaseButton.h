#pragma once

#include <QPushButton>

/// What our push buttons have in common: hover, Return presses as Space does, and the focus is drawn only where the
/// keyboard brought it.
class QBBaseButton : public QPushButton
{
    Q_OBJECT
public:
    explicit QBBaseButton(QWidget *parent = nullptr);
    explicit QBBaseButton(const QString &title, QWidget *parent = nullptr);

protected:
    bool showsFocus() const { return hasFocus() && keyboardFocus; }
    /// As wide as the title and its padding need, at least 96 points, as tall as a field.
    QSize boxSizeHint() const;

    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    bool keyboardFocus = false;
};
