#pragma once

#include <QColor>
#include <QPushButton>

class Branding;

/// The quiet push button beside a primary one: outlined, in the accent colour under the pointer.
class QBSecondaryButton : public QPushButton
{
    Q_OBJECT
public:
    explicit QBSecondaryButton(QWidget *parent = nullptr);
    explicit QBSecondaryButton(const QString &title, QWidget *parent = nullptr);

    void applyBranding(const Branding &branding);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void setUp();

    QColor accent;
    QColor pressed;
    bool keyboardFocus = false;
};
