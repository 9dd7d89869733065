#include "panel/FileCopies.h"

#include "platform/Dispatch.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

QString FileCopies::copying()
{
    return u"copying"_s;
}

QString FileCopies::done()
{
    return u"done"_s;
}

QString FileCopies::failed()
{
    return u"failed"_s;
}

bool FileCopies::hasFailures() const
{
    return std::any_of(copies.cbegin(), copies.cend(), [](const PanelItem &copy) { return copy.state == failed(); });
}

QString FileCopies::freeName(const QString &folder, const QString &name)
{
    const QFileInfo whole(name);
    const QString suffix = whole.suffix().isEmpty() ? QString() : u'.' + whole.suffix();
    const QString base = name.chopped(suffix.size());
    QString candidate = name;
    for (int number = 2; QFileInfo::exists(folder + u'/' + candidate); ++number)
        candidate = u"%1 (%2)%3"_s.arg(base).arg(number).arg(suffix);
    return candidate;
}

void FileCopies::start(const QStringList &files, const QString &folder)
{
    sources = files;
    for (const QString &file : files)
        copies.append({QFileInfo(file).fileName(), folder, PanelItems::waiting()});
    unfinished = files.size();
    next(0);
}

void FileCopies::next(qsizetype index)
{
    if (index >= copies.size()) {
        Q_EMIT changed();
        return;
    }
    copies[index].state = copying();
    Q_EMIT changed();
    const auto copy = [source = sources.at(index), item = copies.at(index)] {
        const QString name = freeName(item.folder, item.name);
        return QFile::copy(source, item.folder + u'/' + name) ? name : QString();
    };
    platform::inBackground(this, copy, [this, index](const QString &name) {
        if (!name.isNull())
            copies[index].name = name;
        copies[index].state = name.isNull() ? failed() : done();
        --unfinished;
        next(index + 1);
    });
}
