#pragma once

#include "ui/QBBaseButton.h"

#include <QColor>

class Branding;

/// The quiet push button beside a primary one: outlined, in the accent colour under the pointer.
class QBSecondaryButton : public QBBaseButton
{
    Q_OBJECT
public:
    explicit QBSecondaryButton(QWidget *parent = nullptr);
    explicit QBSecondaryButton(const QString &title, QWidget *parent = nullptr);

    void applyBranding(const Branding &branding);

    QSize sizeHint() const override { return boxSizeHint(); }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setUp();

    QColor accent;
    QColor pressed;
};
