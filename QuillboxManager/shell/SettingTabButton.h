#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QIcon>

/// A tab of the settings window: a picture over its title, in the accent colour while it is the chosen one. Without a
/// focus ring; the keyboard's place shows as a tinted ground.
class SettingTabButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit SettingTabButton(QWidget *parent = nullptr);

    /// A drawing whose shape counts; its colours do not.
    void setPicture(const QIcon &picture);
    void setAccent(const QColor &color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    QColor ink() const;
    void drawPicture(QPainter &painter, const QRect &place) const;

    QIcon picture;
    QColor accent;
    bool keyboardFocus = false;
};
