#include "ui/QuillboxStyle.h"

#include "ui/Images.h"

#include <QIcon>
#include <QPainter>
#include <QStyleOption>

namespace
{
constexpr int LeastHandle = 32; ///< points, of a scroll bar
} // namespace

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

void QuillboxStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                       const QWidget *widget) const
{
    if (control != CC_ScrollBar) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    painter->fillRect(option->rect, option->palette.color(QPalette::Base));
    if (!(option->state & State_Enabled))
        return;
    const bool held =
        option->activeSubControls == SC_ScrollBarSlider && option->state & (State_Sunken | State_MouseOver);
    const QRect handle = subControlRect(control, option, SC_ScrollBarSlider, widget).adjusted(3, 3, -3, -3);
    const double radius = qMin(handle.width(), handle.height()) / 2.0;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(0, 0, 0, held ? 140 : 80));
    painter->drawRoundedRect(handle, radius, radius);
    painter->restore();
}

QRect QuillboxStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                    const QWidget *widget) const
{
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar)
        return QProxyStyle::subControlRect(control, option, part, widget);
    const bool lying = bar->orientation == Qt::Horizontal;
    const int length = lying ? bar->rect.width() : bar->rect.height();
    const qint64 range = qint64(bar->maximum) - bar->minimum;
    const int least = qMin(length, LeastHandle);
    const int handle =
        range > 0 ? qMax(least, static_cast<int>(qint64(length) * bar->pageStep / (range + bar->pageStep))) : length;
    const int start =
        sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, length - handle, bar->upsideDown);
    const auto piece = [&](int from, int extent) {
        return lying ? QRect(bar->rect.x() + from, bar->rect.y(), extent, bar->rect.height())
                     : QRect(bar->rect.x(), bar->rect.y() + from, bar->rect.width(), extent);
    };
    switch (part) {
    case SC_ScrollBarGroove:
        return bar->rect;
    case SC_ScrollBarSlider:
        return piece(start, handle);
    case SC_ScrollBarSubPage:
        return piece(0, start);
    case SC_ScrollBarAddPage:
        return piece(start + handle, length - start - handle);
    default:
        return {}; // no buttons
    }
}

int QuillboxStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_MessageBoxIconSize:
        return 48;
    case PM_ScrollBarExtent:
        return 12;
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
