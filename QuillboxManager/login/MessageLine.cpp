#include "login/MessageLine.h"

#include "ui/StyleKit.h"

#include <QLabel>

#include <algorithm>

namespace MessageLine
{

namespace
{
constexpr int MostLines = 5;
constexpr qsizetype LongestText = 400; ///< characters; what a server sends may be of any length

/// The line is as wide as its form says, so that a long text grows it downwards and never the window sideways.
void fitHeight(QLabel *line)
{
    const int leastHeight = line->property("leastHeight").toInt();
    const int width = line->maximumWidth();
    const int needed = line->text().isEmpty() ? 0 : line->heightForWidth(width) + StyleKit::Grid;
    const int most = line->fontMetrics().lineSpacing() * MostLines + StyleKit::Grid;
    line->setFixedHeight(std::clamp(needed, leastHeight, std::max(leastHeight, most)));
}

void showHint(QLabel *line, const QString &text)
{
    QPalette palette = line->palette();
    palette.setColor(QPalette::WindowText, StyleKit::secondaryTextColor());
    line->setPalette(palette);
    line->setText(text);
}

void rememberLeastHeight(QLabel *line)
{
    if (!line->property("leastHeight").isValid())
        line->setProperty("leastHeight", line->minimumHeight());
}
} // namespace

void show(QLabel *line, const QString &text, Kind kind)
{
    rememberLeastHeight(line);
    const QString shortened = text.size() > LongestText ? text.left(LongestText) + QChar(0x2026) : text;
    if (kind == Kind::Error)
        StyleKit::showError(line, shortened);
    else if (kind == Kind::Status)
        StyleKit::showStatus(line, shortened);
    else
        showHint(line, shortened);
    line->show();
    fitHeight(line);
}

void clear(QLabel *line)
{
    rememberLeastHeight(line);
    line->clear();
    fitHeight(line);
}

} // namespace MessageLine
