#pragma once

#include <QString>
#include <QTextDocument>

/// Tool tip that shows a text as it stands, although tool tips take what looks like markup for markup. Any thread.
inline QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped()) : text;
}
