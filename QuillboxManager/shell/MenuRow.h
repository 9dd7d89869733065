#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QWidgetAction>

#include <functional>

/// A title as it is drawn in one look of an entry.
struct MenuTitle {
    QString text;
    QColor color;
    QFont font;

    bool operator==(const MenuTitle &other) const = default;
};

/// What all entries of the status menu share: a title in three looks and the pointer's place. `text()` is the shown
/// title, which is also spoken and exported to desktops that draw menus themselves. Main thread.
class MenuRow : public QWidgetAction
{
    Q_OBJECT
public:
    /// `title` names the entry for the application; `action` may be null.
    MenuRow(const QString &title, const std::function<void()> &action, QObject *parent);

    QString title() const { return ownTitle; }

    const MenuTitle &QBTitle() const { return normal; }
    const MenuTitle &QBHighlightedTitle() const { return highlighted; }
    const MenuTitle &QBGrayTitle() const { return gray; }

    /// The pointer or the keyboard is at the entry.
    bool QBHighlighted() const { return underPointer; }
    void setQBHighlighted(bool highlighted);

    enum class Look { Normal, Highlighted, Gray };
    Look look() const;
    const MenuTitle &titleFor(Look look) const;

Q_SIGNALS:
    void lookChanged();

protected:
    void setTitles(const QString &text);

private:
    const QString ownTitle;
    MenuTitle normal;
    MenuTitle highlighted;
    MenuTitle gray;
    bool underPointer = false;
};
