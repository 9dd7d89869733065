#include "api/DocumentTransfer.h"
#include "api/QBNetworking.h"

#include "platform/Dispatch.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 mostInMemory = 1024 * 1024 * 1024; // bytes

class MemorySink : public ByteSink
{
public:
    bool write(const char *bytes, qint64 count) override
    {
        if (contents.size() + count > mostInMemory)
            return false;
        contents.append(bytes, count);
        return true;
    }

    QByteArray contents = QByteArray("");
};

} // namespace

HttpRequest QBNetworking::requestFor(const DocumentCall &call) const
{
    HttpRequest request = requestFor(spliceURL(call.service, call.method), call.body);
    request.replyLimit = call.replyLimit;
    return request;
}

ServerReply QBNetworking::request(const DocumentCall &documentCall, QBError *error)
{
    return call(requestFor(documentCall), error);
}

ServerList QBNetworking::requestList(const DocumentCall &call, ListErrors errors, QBError *error)
{
    const bool inFirst = errors == ListErrors::InFirstElement;
    ServerAnswer answer = exchange(requestFor(call), inFirst ? ReplyShape::Array : ReplyShape::Object);
    if (!answer.error && !answer.document.isArray())
        answer.error = transportError(TransportError::BadReply);
    if (!answer.error)
        return answer.document.array();
    if (error)
        *error = answer.error;
    return {};
}

void QBNetworking::reportToService(const QBError &error)
{
    std::function<void(const QBError &)> reporter;
    {
        const std::lock_guard lock(mutex);
        reporter = serviceErrorReporter;
    }
    const QBError shown = QBError::errorForErrorList(error);
    if (reporter && shown && services.isServiceRunning())
        platform::dispatchMain(QCoreApplication::instance(), [reporter, shown] { reporter(shown); });
}

QByteArray QBNetworking::requestFileDataWithDocID(const QString &docid, qint64 size, qint64 offset, QBError *error)
{
    if (size < 0 || size > mostInMemory) {
        if (error)
            *error = transportError(TransportError::ReplyTooLarge);
        return {};
    }
    QByteArray contents(size, Qt::Uninitialized);
    const auto range = DocumentTransfer(*this).readRange(docid, offset, size, contents.data(), error);
    if (!range)
        return {};
    contents.truncate(range->bytes);
    return contents;
}

QByteArray QBNetworking::requestFileDataWithDocID(const QString &docid, qint64 *totalSize, QBError *error)
{
    MemorySink sink;
    if (!DocumentTransfer(*this).downloadFile(docid, sink, error))
        return {};
    if (totalSize)
        *totalSize = sink.contents.size();
    return sink.contents;
}

ServerReply QBNetworking::requestCreateFileWithParentDocID(const QString &parentDocid, const QString &name,
                                                           QBError *error)
{
    MemorySource nothing({});
    return DocumentTransfer(*this).createFile(parentDocid, name, nothing, error);
}

ServerReply QBNetworking::requestUploadFileWithDocID(const QString &docid, const QByteArray &contents, QBError *error)
{
    MemorySource source(contents);
    return DocumentTransfer(*this).uploadFile(docid, source, error);
}
