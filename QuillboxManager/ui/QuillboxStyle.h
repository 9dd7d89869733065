#pragma once

#include <QProxyStyle>

/// The platform-neutral style under our own controls, with the house's pictures for message boxes.
class QuillboxStyle : public QProxyStyle
{
    Q_OBJECT
public:
    QuillboxStyle();

    QIcon standardIcon(StandardPixmap kind, const QStyleOption *option, const QWidget *widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override;
};
