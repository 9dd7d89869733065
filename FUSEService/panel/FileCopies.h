#pragma once

#include "panel/PanelItems.h"

#include <QObject>
#include <QStringList>

/// Copies files into a folder, one after the other, in the background. A name that is taken there gets a number. Main
/// thread.
class FileCopies : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Once.
    void start(const QStringList &files, const QString &folder);
    const QList<PanelItem> &items() const { return copies; }
    bool isBusy() const { return unfinished > 0; }
    /// One file at least could not be copied.
    bool hasFailures() const;

    /// A name that stands for `name` and is free in the folder.
    static QString freeName(const QString &folder, const QString &name);

    // States.
    static QString copying();
    static QString done();
    static QString failed();

Q_SIGNALS:
    void changed();

private:
    void next(qsizetype index);

    QStringList sources;
    QList<PanelItem> copies;
    qsizetype unfinished = 0;
};
