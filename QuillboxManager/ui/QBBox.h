#pragma once

#include <QColor>
#include <QFrame>

/// The bordered box around a text field and its icon. A press on it puts the focus into its first field. A border other
/// than the idle one is drawn twice as wide, so that the focus shows without its colour.
class QBBox : public QFrame
{
    Q_OBJECT
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor)
    Q_PROPERTY(QColor fillColor READ fillColor WRITE setFillColor)
    Q_PROPERTY(qreal cornerRadius READ cornerRadius WRITE setCornerRadius)
public:
    explicit QBBox(QWidget *parent = nullptr);

    /// Black at alpha 0.42.
    static QColor idleBorderColor();

    QColor borderColor() const { return border; }
    void setBorderColor(const QColor &color);
    QColor fillColor() const { return fill; }
    void setFillColor(const QColor &color);
    qreal cornerRadius() const { return radius; }
    void setCornerRadius(qreal points);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QColor border = idleBorderColor();
    QColor fill = Qt::white;
    qreal radius = 3;
};
