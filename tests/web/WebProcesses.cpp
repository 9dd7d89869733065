#include "WebProcesses.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>

namespace
{
QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

QSet<qint64> WebProcesses::all()
{
    QHash<qint64, qint64> parents;
    QSet<qint64> engine;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &process : processes) {
        const qint64 id = process.toLongLong();
        const QByteArray stat = content(QStringLiteral("/proc/%1/stat").arg(process));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (id == 0 || fields.size() < 2 || fields.at(0) == "Z")
            continue;
        parents.insert(id, fields.at(1).toLongLong());
        if (stat.contains("(QtWebEngine"))
            engine.insert(id);
    }
    QSet<qint64> below;
    for (const qint64 id : std::as_const(engine)) {
        qint64 ancestor = id;
        while (ancestor > 1 && ancestor != QCoreApplication::applicationPid())
            ancestor = parents.value(ancestor);
        if (ancestor == QCoreApplication::applicationPid())
            below.insert(id);
    }
    return below;
}
