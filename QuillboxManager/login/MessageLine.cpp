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
constexpr qsizetype ShortenedBy = 8;   ///< characters at a time until the text fits

QString ellipsized(const QString &text, qsizetype length)
{
    return length < text.size() ? text.left(length).trimmed() + QChar(0x2026) : text;
}

/// The line is as wide as its form says, so that a long text grows it downwards and never the window sideways; what
/// does not fit into its last line gives way to an ellipsis.
void fit(QLabel *line)
{
    const QString text = line->text();
    const int leastHeight = line->property("leastHeight").toInt();
    const int most = std::max(leastHeight, line->fontMetrics().lineSpacing() * MostLines + StyleKit::Grid);
    line->setMinimumHeight(0); // a label never wants less than its minimum
    const auto needed = [line] {
        return line->text().isEmpty() ? 0 : line->heightForWidth(line->maximumWidth()) + StyleKit::Grid;
    };
    for (qsizetype shown = std::min(text.size(), LongestText); shown > 0; shown -= ShortenedBy) {
        line->setText(ellipsized(text, shown));
        if (needed() <= most)
            break;
    }
    line->setFixedHeight(std::clamp(needed(), leastHeight, most));
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
    const QString shortened = ellipsized(text, LongestText);
    if (kind == Kind::Error)
        StyleKit::showError(line, shortened);
    else if (kind == Kind::Status)
        StyleKit::showStatus(line, shortened);
    else
        showHint(line, shortened);
    line->show();
    fit(line);
}

void clear(QLabel *line)
{
    rememberLeastHeight(line);
    line->clear();
    fit(line);
}

} // namespace MessageLine
