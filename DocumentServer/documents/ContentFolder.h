#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace documentserver
{

/// Writes one content beside the finished ones; what is not kept is gone when the writer goes. Bytes come in order;
/// whole blocks of zeros take no room on disk. One thread. Failures throw ApiError (InternalError).
class ContentWriter
{
public:
    ContentWriter(const QString &folder, QString name);
    ~ContentWriter();
    ContentWriter(const ContentWriter &) = delete;
    ContentWriter &operator=(const ContentWriter &) = delete;

    void write(const char *data, qint64 length);
    enum class Flush { Now, Later };
    /// The last that is written. Everything is on disk when it returns, or else after ContentFolder::flush.
    void finish(Flush when = Flush::Now);
    /// The file stays from now on.
    void keep() { kept = true; }

    qint64 size() const { return flushed + static_cast<qint64>(used); }
    const QString &content() const { return id; }

private:
    void flush();
    void writeAt(const char *data, size_t length, qint64 position);

    const QString id;
    QByteArray path;
    int file = -1;
    bool kept = false;
    std::vector<char> buffer;
    size_t used = 0;
    qint64 flushed = 0;
};

/// The contents of all revisions, a file each, that never changes once it is there. Any thread.
class ContentFolder
{
public:
    /// Makes what is missing; finishes or clears away what a killed server left behind.
    bool open(const QString &folder, const std::function<bool(const QString &)> &isInUse, QString *error);

    std::unique_ptr<ContentWriter> write() const;
    /// What was finished until now is on disk when it returns: for many contents at a time.
    void flush() const;
    /// Moves a kept content from where it was written to where it stays.
    void settle(const QString &content) const;
    /// A descriptor for reading, -1 where there is no such content.
    int descriptor(const QString &content) const;
    void remove(const QString &content) const;

private:
    QString incoming() const { return root + QLatin1String("/incoming"); }
    QString pathOf(const QString &content) const;

    QString root;
};

} // namespace documentserver
