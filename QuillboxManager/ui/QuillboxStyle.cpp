#include "ui/QuillboxStyle.h"

#include "ui/Images.h"

#include <QIcon>

QuillboxStyle::QuillboxStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

QIcon QuillboxStyle::standardIcon(StandardPixmap kind, const QStyleOption *option, const QWidget *widget) const
{
    QIcon icon;
    if (kind == SP_MessageBoxInformation)
        icon = Images::imageNamed(QStringLiteral("AlertInformation"));
    else if (kind == SP_MessageBoxWarning || kind == SP_MessageBoxCritical)
        icon = Images::imageNamed(QStringLiteral("AlertCaution"));
    return icon.isNull() ? QProxyStyle::standardIcon(kind, option, widget) : icon;
}

int QuillboxStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_MessageBoxIconSize:
        return 48;
    case PM_LayoutLeftMargin:
    case PM_LayoutTopMargin:
    case PM_LayoutRightMargin:
    case PM_LayoutBottomMargin:
        return 16;
    case PM_LayoutHorizontalSpacing:
    case PM_LayoutVerticalSpacing:
        return 8;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int QuillboxStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                             QStyleHintReturn *data) const
{
    // Buttons show their titles only, whatever the desktop does.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, data);
}
