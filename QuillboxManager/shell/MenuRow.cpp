#include "shell/MenuRow.h"

#include "ui/QBFont.h"

MenuRow::MenuRow(const QString &title, const std::function<void()> &action, QObject *parent)
    : QWidgetAction(parent), ownTitle(title)
{
    setMenuRole(QAction::NoRole);
    connect(this, &QAction::changed, this, &MenuRow::lookChanged);
    if (action)
        connect(this, &QAction::triggered, this, action);
}

void MenuRow::setTitles(const QString &text)
{
    const QFont font = QBFont::SYsystemFontOfSize(QBFont::SystemFontSize);
    normal = {text, Qt::black, font};
    highlighted = {text, Qt::white, font};
    gray = {text, QColor(0xAA, 0xAA, 0xAA), font};
    setText(text);
}

void MenuRow::setQBHighlighted(bool isHighlighted)
{
    if (underPointer == isHighlighted)
        return;
    underPointer = isHighlighted;
    Q_EMIT lookChanged();
}

MenuRow::Look MenuRow::look() const
{
    if (!isEnabled())
        return Look::Gray;
    return underPointer ? Look::Highlighted : Look::Normal;
}

const MenuTitle &MenuRow::titleFor(Look look) const
{
    if (look == Look::Gray)
        return gray;
    return look == Look::Highlighted ? highlighted : normal;
}
