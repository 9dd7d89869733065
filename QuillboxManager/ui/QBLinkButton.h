#pragma once

#include "ui/QBBaseButton.h"

#include <QColor>

class Branding;

/// A flat text in the accent colour that is pressed like a link; underlined under the pointer and, twice as
/// thick, with the focus.
class QBLinkButton : public QBBaseButton
{
    Q_OBJECT
public:
    explicit QBLinkButton(QWidget *parent = nullptr);
    explicit QBLinkButton(const QString &title, QWidget *parent = nullptr);

    void applyBranding(const Branding &branding);
    /// A colour of its own instead of the accent.
    void setTextColor(const QColor &color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setUp();

    QColor color;
};
