#include "support/LogRecorder.h"

#include <QMutex>
#include <QtGlobal>

namespace testing {

namespace {
QMutex mutex;
QStringList recorded;
QtMessageHandler previous = nullptr;

void record(QtMsgType, const QMessageLogContext &, const QString &text)
{
    QMutexLocker lock(&mutex);
    recorded.append(text);
}
} // namespace

LogRecorder::LogRecorder()
{
    {
        QMutexLocker lock(&mutex);
        recorded.clear();
    }
    previous = qInstallMessageHandler(record);
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(previous);
}

QStringList LogRecorder::lines() const
{
    QMutexLocker lock(&mutex);
    return recorded;
}

bool LogRecorder::contains(const QString &text) const
{
    for (const QString &line : lines())
        if (line.contains(text))
            return true;
    return false;
}

} // namespace testing
