#pragma once

#include <QProxyStyle>

/// The platform-neutral style under our own controls, with the house's pictures for message boxes.
class QuillboxStyle : public QProxyStyle
{
    Q_OBJECT
public:
    QuillboxStyle();

    QIcon standardIcon(StandardPixmap kind, const QStyleOption *option, const QWidget *widget) const override;
    /// Scroll bars are a slim handle without buttons.
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                         const QWidget *widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override;
};
