#pragma once

#include "shell/MenuRow.h"

#include <QFont>
#include <QIcon>
#include <QMenu>
#include <QPointer>

/// An entry of the status menu with a picture. Main thread.
class QBMenuItem : public MenuRow
{
    Q_OBJECT
public:
    /// A run-time entry: pictures and shown title come from the base name. Belongs to `parent`. A null `pictures`
    /// folder means the main bundle's resources.
    static QBMenuItem *initWithTitle(const QString &title, const std::function<void()> &action,
                                     const QString &keyEquivalent, const QString &mainString, QObject *parent,
                                     const QString &pictures = {});
    /// An entry as it stands in the layout of the menu, to be completed by `setUpWithTitle`.
    QBMenuItem(const QString &title, const std::function<void()> &action, QObject *parent,
               const QString &pictures = {});

    /// Pictures and titles of the base name.
    void setUp();
    /// Pictures and titles of the entry that is recognised by this title; an unknown one keeps it as it stands.
    void setUpWithTitle(const QString &title);

    /// Takes the entry out of its menu and remembers where it stood.
    void removeSelfInMenu();
    /// Puts it back at the index it had, or at the end of a menu that got shorter.
    void showSelfInMenu();

    QString QBMainString() const { return mainString; }
    QIcon QBImage() const { return picture(images.normal); }
    QIcon QBHighlightedImage() const { return picture(images.highlighted); }
    QIcon QBGrayImage() const { return picture(images.gray); }
    /// The arrows are null without a submenu.
    QIcon QBRightArrowImage() const { return picture(rightArrows.normal); }
    QIcon QBRightArrowHighlightedImage() const { return picture(rightArrows.highlighted); }
    QIcon QBRightArrowGrayImage() const { return picture(rightArrows.gray); }
    QIcon imageFor(Look look) const { return picture(images.of(look)); }
    QIcon arrowFor(Look look) const { return picture(rightArrows.of(look)); }

protected:
    QWidget *createWidget(QWidget *parent) override;

private:
    /// Names; the pictures themselves are loaded when the menu is painted for the first time.
    struct Pictures {
        QString normal;
        QString highlighted;
        QString gray;

        const QString &of(Look look) const;
    };

    QIcon picture(const QString &name) const;

    const QString pictures;
    QString mainString;
    Pictures images;
    Pictures rightArrows;
    QPointer<QMenu> QBmenu; ///< where it stood when it was taken out
    int QBIndexInMenu = -1;
};
