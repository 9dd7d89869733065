#pragma once

#include <QFont>
#include <QString>

class QWidget;

/// The interface's fonts: the "Source Han Sans SC" family where it is installed ("Noto Sans CJK SC" is the same design
/// and counts), else the platform's. Sizes are points of the layout grid, one logical pixel each. Main thread.
namespace QBFont
{

/// The regular system font of the size.
QFont SYsystemFontOfSize(qreal size);
/// The same regular weight as `SYsystemFontOfSize`: the family's regular face stands for bold as well.
QFont SYboldSystemFontOfSize(qreal size);
/// Gives a button or text field that was loaded from a form the family, at its present size.
void SYFonts_AwakeFromNib(QWidget *control);
/// Runs `SYFonts_AwakeFromNib` for every button and text field below `window`.
void awakeControls(QWidget *window);

/// Is a font installed? Asks by family ("Noto Sans CJK SC") or by face name ("SourceHanSansSC-Normal").
bool fontAvailable(const QString &name);

/// Makes the family the application's font, once; later calls do nothing.
void install();

constexpr int SystemFontSize = 13;

} // namespace QBFont
