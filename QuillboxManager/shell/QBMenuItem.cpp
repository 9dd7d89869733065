#include "shell/QBMenuItem.h"

#include "platform/Localization.h"
#include "shell/MenuRecognition.h"
#include "shell/QBMenuItemView.h"
#include "shell/ShellStrings.h"
#include "ui/Images.h"

#include <QKeySequence>

using namespace Qt::StringLiterals;

namespace
{
QString menuText(const QString &key)
{
    return platform::localizedString(key, ShellStrings::menuTable());
}
} // namespace

QBMenuItem::QBMenuItem(const QString &title, const std::function<void()> &action, QObject *parent,
                       const QString &pictureFolder)
    : MenuRow(title, action, parent), pictures(pictureFolder)
{
    setTitles(title);
}

QBMenuItem *QBMenuItem::initWithTitle(const QString &title, const std::function<void()> &action,
                                      const QString &keyEquivalent, const QString &mainString, QObject *parent,
                                      const QString &pictures)
{
    auto *item = new QBMenuItem(title, action, parent, pictures);
    item->setShortcut(QKeySequence(keyEquivalent));
    item->mainString = mainString;
    item->setUp();
    return item;
}

QIcon QBMenuItem::picture(const QString &name) const
{
    return name.isNull() ? QIcon() : Images::imageNamed(name, pictures);
}

void QBMenuItem::setUp()
{
    images = {mainString + u"-Normal"_s, mainString + u"-Enter"_s, mainString + u"-Gray"_s};
    const QString key = mainString + u".title"_s;
    setTitles(platform::hasLocalizedString(key, ShellStrings::menuTable()) ? menuText(key) : QString());
    setQBHighlighted(false);
}

void QBMenuItem::setUpWithTitle(const QString &title)
{
    const shell::MenuLook *look = shell::recognizeMenuTitle(title, menuText);
    if (!look)
        return;
    images = {look->normal, look->pointer, look->disabled};
    setTitles(menuText(look->displayKey));
    if (look->hasArrow)
        rightArrows = {u"RightArrow-Normal"_s, u"RightArrow-Enter"_s, u"RightArrow-Gray"_s};
    setQBHighlighted(false);
}

const QString &QBMenuItem::Pictures::of(Look look) const
{
    if (look == Look::Gray)
        return gray;
    return look == Look::Highlighted ? highlighted : normal;
}

void QBMenuItem::removeSelfInMenu()
{
    for (QObject *object : associatedObjects()) {
        auto *menu = qobject_cast<QMenu *>(object);
        if (!menu)
            continue;
        QBmenu = menu;
        QBIndexInMenu = static_cast<int>(menu->actions().indexOf(this));
        menu->removeAction(this);
        return;
    }
}

void QBMenuItem::showSelfInMenu()
{
    if (QBmenu && !QBmenu->actions().contains(this))
        QBmenu->insertAction(QBmenu->actions().value(QBIndexInMenu), this);
}

QWidget *QBMenuItem::createWidget(QWidget *parent)
{
    return new QBMenuItemView(*this, parent);
}
