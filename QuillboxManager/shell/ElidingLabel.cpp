#include "shell/ElidingLabel.h"

#include <QPainter>

ElidingLabel::ElidingLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ElidingLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()), fontMetrics().height()};
}

QSize ElidingLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

void ElidingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QString line = QString(text()).replace(u'\n', u' ');
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(line, Qt::ElideRight, width(), Qt::TextSingleLine));
}
