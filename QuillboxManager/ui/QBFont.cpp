#include "ui/QBFont.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>

namespace QBFont
{

namespace
{
/// Names under which the family is installed, the best first.
const QStringList &families()
{
    static const QStringList names{QStringLiteral("Source Han Sans SC"), QStringLiteral("Source Han Sans SC Normal"),
                                   QStringLiteral("Noto Sans CJK SC")};
    return names;
}

/// Null when the family is not installed. Asked afresh until found: the font may be installed while we run.
QString installedFamily()
{
    static QString found;
    for (const QString &family : families()) {
        if (!found.isNull())
            break;
        if (QFontDatabase::hasFamily(family))
            found = family;
    }
    return found;
}

/// Weight and slant of the system font, family of the house, size of `model`.
QFont substitute(const QFont &model)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setWeight(QFont::Normal);
    if (const QString family = installedFamily(); !family.isNull())
        font.setFamilies({family});
    if (model.pixelSize() > 0)
        font.setPixelSize(model.pixelSize());
    else
        font.setPointSizeF(model.pointSizeF());
    return font;
}
} // namespace

QFont SYsystemFontOfSize(qreal size)
{
    QFont model;
    model.setPixelSize(qMax(1, qRound(size)));
    return substitute(model);
}

QFont SYboldSystemFontOfSize(qreal size)
{
    return SYsystemFontOfSize(size);
}

void SYFonts_AwakeFromNib(QWidget *control)
{
    if (fontAvailable(QStringLiteral("SourceHanSansSC-Normal")))
        control->setFont(substitute(control->font()));
}

void awakeControls(QWidget *window)
{
    for (QWidget *control : window->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QLineEdit *>(control) ||
            qobject_cast<QLabel *>(control))
            SYFonts_AwakeFromNib(control);
    }
}

bool fontAvailable(const QString &name)
{
    if (name == QLatin1String("SourceHanSansSC-Normal"))
        return !installedFamily().isNull();
    return QFontDatabase::hasFamily(name);
}

void install()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    QApplication::setFont(SYsystemFontOfSize(SystemFontSize));
}

} // namespace QBFont
