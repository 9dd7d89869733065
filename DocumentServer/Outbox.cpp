#include "Outbox.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype mostKept = 100;
}

bool Outbox::deliver(const SentCode &code)
{
    const std::lock_guard lock(mutex);
    if (!file.isEmpty() && !append(code))
        return false;
    if (print) {
        std::printf("code %s %s %s\n", qPrintable(code.way), qPrintable(code.account), qPrintable(code.code));
        std::fflush(stdout);
    }
    sent.append(code);
    if (sent.size() > mostKept)
        sent.removeFirst();
    return true;
}

void Outbox::note(const SentCode &code) const
{
    const std::lock_guard lock(mutex);
    if (!file.isEmpty())
        append(code);
}

bool Outbox::append(const SentCode &code) const
{
    const QJsonObject line{{u"time"_s, QDateTime::fromMSecsSinceEpoch(now()).toString(Qt::ISODateWithMs)},
                           {u"account"_s, code.account},
                           {u"way"_s, code.way},
                           {u"destination"_s, code.destination},
                           {u"code"_s, code.code}};
    const QByteArray bytes = QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    QFile out(file);
    return out.open(QIODevice::WriteOnly | QIODevice::Append) &&
           out.setPermissions(QFile::ReadOwner | QFile::WriteOwner) && out.write(bytes) == bytes.size() && out.flush();
}

QList<SentCode> Outbox::newest() const
{
    const std::lock_guard lock(mutex);
    return sent;
}

} // namespace documentserver
