#include "api/DocumentTransfer.h"

#include "api/MultipartBody.h"
#include "api/MultipartReader.h"
#include "api/QBApiManager.h"
#include "api/ServerReplies.h"
#include "files/Descriptor.h"

#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

constexpr int boundaryLength = 16;
constexpr int firstSerialNumber = 0;            // "sn"
constexpr qint64 shortReplyLimit = 1024 * 1024; // bytes of a record or an error

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

QBError badReply()
{
    return transportError(TransportError::BadReply);
}

/// The value of an entity tag, whose quotes are not part of a revision's name.
QString revisionOf(QByteArray tag)
{
    tag = tag.trimmed();
    if (tag.startsWith("W/"))
        tag.remove(0, 2);
    if (tag.size() >= 2 && tag.startsWith('"') && tag.endsWith('"'))
        tag = tag.mid(1, tag.size() - 2);
    return tag.isEmpty() ? QString() : QString::fromUtf8(tag);
}

qint64 sizeOf(const QByteArray &header)
{
    bool number = false;
    const qint64 size = header.trimmed().toLongLong(&number);
    return number && size >= 0 ? size : -1;
}

/// A buffer of fixed size.
class BufferSink : public ByteSink
{
public:
    BufferSink(char *buffer, qint64 size) : into(buffer), room(size) {}

    bool write(const char *bytes, qint64 count) override
    {
        if (count > room - taken)
            return false;
        std::memcpy(into + taken, bytes, static_cast<size_t>(count));
        taken += count;
        return true;
    }

private:
    char *const into;
    const qint64 room;
    qint64 taken = 0;
};

/// A reply's bytes, no more than were asked for, into a sink.
class RangeSink : public ReplySink
{
public:
    RangeSink(ByteSink &sink, qint64 length) : contents(sink), wanted(length) {}

    bool takes(int status, const QByteArray &contentType) override
    {
        return isSuccess(status) && !contentType.toLower().contains("json");
    }
    bool write(const char *bytes, qint64 count) override
    {
        isTooLong = count > wanted - taken;
        if (isTooLong || !contents.write(bytes, count))
            return false;
        taken += count;
        return true;
    }
    TransportError refusal() const override
    {
        return isTooLong ? TransportError::BadReply : TransportError::CannotWrite;
    }
    qint64 bytes() const { return taken; }

private:
    ByteSink &contents;
    const qint64 wanted;
    qint64 taken = 0;
    bool isTooLong = false;
};

/// A multipart reply's contents into a sink.
class MultipartSink : public ReplySink
{
public:
    explicit MultipartSink(ByteSink &sink) : contents(sink) {}

    bool takes(int status, const QByteArray &contentType) override
    {
        if (!isSuccess(status) || !contentType.toLower().startsWith("multipart/"))
            return false;
        reader.emplace(MultipartReader::boundaryOf(contentType), contents);
        return true;
    }
    bool write(const char *bytes, qint64 count) override { return reader->write(bytes, count); }
    TransportError refusal() const override
    {
        return reader->isMalformed() ? TransportError::BadReply : TransportError::CannotWrite;
    }

    /// The record of a document that came whole; `error` otherwise.
    ServerReply finish(QBError &error) const;

private:
    ByteSink &contents;
    std::optional<MultipartReader> reader; ///< nothing while no multipart reply came
};

ServerReply MultipartSink::finish(QBError &error) const
{
    if (!reader) {
        error = badReply();
        return {};
    }
    const ServerReply record = ServerReplies::object(reader->record());
    const bool shortened = record && record->contains(u"size"_s) && Descriptor::size(*record) != reader->contentsSize();
    if (record && record->contains(u"errcode"_s))
        error = ServerReplies::serverError(*record, ServerReplies::Variant::Object);
    else if (!reader->isComplete() || shortened)
        error = transportError(TransportError::ConnectionLost);
    else if (!record)
        error = badReply();
    return error ? std::nullopt : record;
}

/// What `range` lacks although the reply says that there is more.
bool isShort(const DocumentRange &range, qint64 offset, qint64 length)
{
    return range.totalSize >= 0 && range.bytes < std::min(length, std::max<qint64>(0, range.totalSize - offset));
}

template <typename Result> Result given(const Result &result, const QBError &problem, QBError *error)
{
    if (problem && error)
        *error = problem;
    return problem ? Result() : result;
}

} // namespace

HttpRequest DocumentTransfer::requestFor(const QString &method) const
{
    HttpRequest request;
    request.url = client.spliceURL(u"file"_s, method);
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded charset=utf-8"}};
    request.replyLimit = shortReplyLimit;
    request.stop = stopSignal;
    return request;
}

ServerReply DocumentTransfer::uploadFile(const QString &docid, ByteSource &contents, QBError *error,
                                         std::optional<qint64> clientTime)
{
    return upload({{u"docid"_s, docid}, {u"ondup"_s, Overwrite}}, contents, clientTime, error);
}

ServerReply DocumentTransfer::createFile(const QString &parentDocid, const QString &name, ByteSource &contents,
                                         QBError *error, int ondup, std::optional<qint64> clientTime)
{
    return upload({{u"docid"_s, parentDocid}, {u"name"_s, name}, {u"ondup"_s, ondup}}, contents, clientTime, error);
}

ServerReply DocumentTransfer::upload(QJsonObject parameters, ByteSource &contents, std::optional<qint64> clientTime,
                                     QBError *error)
{
    parameters.insert(u"length"_s, contents.size());
    if (clientTime)
        parameters.insert(u"client_mtime"_s, *clientTime);
    const QByteArray boundary = QBApiManager::randomBoundaryWithLength(boundaryLength).toLatin1();
    MultipartBody body(boundary, QBApiManager::serializeCompact(parameters), contents);
    HttpRequest request = requestFor(u"upload"_s);
    request.upload = &body;
    request.headers = {{"Content-Type", MultipartBody::contentType(boundary)}};

    ServerAnswer answer = client.transfer(request);
    const ServerReply record = answer.object();
    if (!answer.error && !record)
        answer.error = badReply();
    return given(record, answer.error, error);
}

std::optional<DocumentRange> DocumentTransfer::readRange(const QString &docid, qint64 offset, qint64 length, char *into,
                                                         QBError *error, const QString &rev)
{
    BufferSink buffer(into, length);
    return readRange(docid, offset, length, buffer, error, rev);
}

std::optional<DocumentRange> DocumentTransfer::readRange(const QString &docid, qint64 offset, qint64 length,
                                                         ByteSink &into, QBError *error, const QString &rev)
{
    QJsonObject parameters{{u"docid"_s, docid}, {u"offset"_s, offset}, {u"length"_s, length}};
    if (!rev.isNull())
        parameters.insert(u"rev"_s, rev);
    RangeSink sink(into, length);
    HttpRequest request = requestFor(u"read"_s);
    request.body = QBApiManager::serializeCompact(parameters);
    request.sink = &sink;
    request.wantedHeaders = {"ETag", "X-Total-Size"};

    ServerAnswer answer = client.transfer(request);
    const DocumentRange range{sink.bytes(), revisionOf(answer.reply.headers.value("ETag")),
                              sizeOf(answer.reply.headers.value("X-Total-Size"))};
    const bool otherRevision = !rev.isNull() && !range.rev.isNull() && range.rev != rev;
    const bool unread = !isSuccess(answer.reply.status) || !answer.reply.body.isEmpty();
    if (!answer.error && (unread || otherRevision || isShort(range, offset, length)))
        answer.error = badReply();
    return given(std::optional(range), answer.error, error);
}

ServerReply DocumentTransfer::downloadFile(const QString &docid, ByteSink &sink, QBError *error, const QString &rev)
{
    QJsonObject parameters{{u"docid"_s, docid}, {u"sn"_s, firstSerialNumber}};
    if (!rev.isNull())
        parameters.insert(u"rev"_s, rev);
    MultipartSink parts(sink);
    HttpRequest request = requestFor(u"download"_s);
    request.body = QBApiManager::serializeCompact(parameters);
    request.sink = &parts;

    ServerAnswer answer = client.transfer(request);
    const ServerReply record = answer.error ? std::nullopt : parts.finish(answer.error);
    return given(record, answer.error, error);
}
