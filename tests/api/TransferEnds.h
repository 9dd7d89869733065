#pragma once

#include "api/ByteSink.h"
#include "api/ByteSource.h"
#include "support/Files.h"

#include <QByteArray>

#include <cstring>

/// Highest resident memory of this process so far, in bytes.
inline qint64 peakMemory()
{
    const QByteArray text = testing::contentOf(QStringLiteral("/proc/self/status"));
    return text.mid(text.indexOf("VmHWM:") + 6).trimmed().split(' ').first().toLongLong() * 1024;
}

/// Zeros of any length, made when they are asked for; it can run dry before its promised end.
class ZeroSource : public ByteSource
{
public:
    explicit ZeroSource(qint64 promised, qint64 delivered = -1)
        : length(promised), end(delivered < 0 ? promised : delivered)
    {
    }

    qint64 size() const override { return length; }
    qint64 readAt(qint64 offset, char *into, qint64 most) override
    {
        const qint64 count = std::min(most, end - offset);
        if (count > 0)
            std::memset(into, 0, static_cast<size_t>(count));
        return count;
    }

private:
    const qint64 length;
    const qint64 end;
};

/// Counts what it takes and keeps the first bytes; it can refuse more than so many.
class CountingSink : public ByteSink
{
public:
    explicit CountingSink(qint64 most = -1) : limit(most) {}

    bool write(const char *bytes, qint64 count) override
    {
        taken += count;
        if (kept.size() < 1'000'000)
            kept.append(bytes, count);
        return limit < 0 || taken <= limit;
    }

    qint64 taken = 0;
    QByteArray kept;

private:
    const qint64 limit;
};
