#pragma once

#include "platform/NotificationCenter.h"

#include <QCheckBox>
#include <QColor>

class Branding;

/// Check box of the house: a small box that fills with the accent colour and shows a tick. It can announce its state as
/// local notifications, for windows whose rules hang on it.
class QBCheckBox : public QCheckBox
{
    Q_OBJECT
    Q_PROPERTY(QString tickedNotification MEMBER tickedNotification)
    Q_PROPERTY(QString clearedNotification MEMBER clearedNotification)
public:
    explicit QBCheckBox(QWidget *parent = nullptr,
                        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter());

    void applyBranding(const Branding &branding);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void paintBox(QPainter &painter, const QRectF &box) const;

    platform::NotificationCenter &center;
    QString tickedNotification;  ///< posted when the box gets ticked, null: none
    QString clearedNotification; ///< posted when it gets cleared, null: none
    QColor accent;
    bool keyboardFocus = false;
};
