#pragma once

#include "shell/MenuRow.h"

/// An entry of a submenu: a title in three looks, without a picture. Main thread.
class QBSubMenuItem : public MenuRow
{
    Q_OBJECT
public:
    QBSubMenuItem(const QString &title, const std::function<void()> &action, QObject *parent);

protected:
    QWidget *createWidget(QWidget *parent) override;
};
