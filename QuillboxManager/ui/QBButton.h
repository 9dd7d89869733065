#pragma once

#include "ui/QBBaseButton.h"

#include <QColor>

class Branding;

/// The primary push button: a filled box with a white title, one colour for each state.
class QBButton : public QBBaseButton
{
    Q_OBJECT
public:
    explicit QBButton(QWidget *parent = nullptr);
    explicit QBButton(const QString &title, QWidget *parent = nullptr);

    void setColor_Normal(const QColor &color);
    void setColor_MouseEnter(const QColor &color);
    void setColor_MouseDown(const QColor &color);
    void setColor_Disable(const QColor &color);
    /// Sets all four from the branding file; every QBButton starts with the main bundle's.
    void applyBranding(const Branding &branding);

    /// The colour of the state the button is in.
    QColor currentColor() const;

    QSize sizeHint() const override { return boxSizeHint(); }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setUp();

    QColor normal;
    QColor mouseEnter;
    QColor mouseDown;
    QColor disable;
};
