#include "DocumentCalls.h"
#include "Revisions.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 largestOffset = 9'000'000'000'000'000; // beyond, numbers in JSON are not exact

struct Opened {
    Place place;
    Revision revision;
    int descriptor = -1;
};

/// Finds the revision and opens its content before anybody can remove it: once open, it can be read to its end.
Opened openRevision(const Call &request, Services &services)
{
    const QString wanted = optionalText(request.body, "rev", 64);
    for (int attempt = 0;; ++attempt) {
        const ReadingCall call(request, services);
        Opened opened{call.places.findFile(docidIn(call.body())), {}, -1};
        opened.place.require(MayRead);
        const qint64 number = wanted.isEmpty() ? opened.place.node.revision : parseRevision(wanted);
        const auto revision = findRevision(call.database, opened.place.node.id, number);
        if (!revision)
            throw ApiError{DocumentGone, {}, u"no such revision"_s, {}};
        opened.revision = *revision;
        if (!revision->content.isEmpty())
            opened.descriptor = services.documents.contents.descriptor(revision->content);
        if (opened.descriptor >= 0 || revision->content.isEmpty())
            return opened;
        // It may have been replaced since it was looked up, but not again and again.
        if (attempt == 3)
            throw ApiError{InternalError, {}, u"the content of %1 is missing"_s.arg(revision->content), {}};
    }
}

Reply readRange(const Call &call, Services &services)
{
    const qint64 offset = requiredNumber(call.body, "offset", 0, largestOffset);
    const qint64 length = requiredNumber(call.body, "length", 0, largestOffset);
    const Opened opened = openRevision(call, services);
    const qint64 start = std::min(offset, opened.revision.size);
    const qint64 count = std::min(length, opened.revision.size - start);
    Reply reply;
    reply.type = "application/octet-stream";
    reply.headers = {{"ETag", revisionText(opened.revision.id).toLatin1()},
                     {"X-Total-Size", QByteArray::number(opened.revision.size)}};
    reply.stream = std::make_shared<ReplyStream>(QByteArray(), opened.descriptor, start, count, QByteArray());
    return reply;
}

QByteArray newBoundary()
{
    return revisionText(newTag()).rightJustified(16, u'0').toLatin1();
}

Reply download(const Call &call, Services &services)
{
    const Opened opened = openRevision(call, services);
    QJsonObject record = recordOf(opened.place.node);
    const QJsonObject revision = recordOf(opened.revision);
    for (const QLatin1String member : {"rev"_L1, "size"_L1, "modified"_L1, "client_mtime"_L1, "editor"_L1})
        record.insert(member, revision.value(member));
    const QByteArray boundary = newBoundary();
    const QByteArray json = QJsonDocument(record).toJson(QJsonDocument::Compact);
    const QByteArray head = "--" + boundary + "\r\n\r\n" + json + "\r\n--" + boundary + "\r\n\r\n";
    Reply reply;
    reply.type = "multipart/form-data;boundary=" + boundary;
    reply.stream =
        std::make_shared<ReplyStream>(head, opened.descriptor, 0, opened.revision.size, "\r\n--" + boundary + "--");
    return reply;
}
} // namespace

void addContentCalls(CallTable *table, Services &services)
{
    CallEntry reading;
    reading.replyHandler = [&services](const Call &call) { return readRange(call, services); };
    table->insert(u"file.read"_s, reading);
    CallEntry downloading;
    downloading.replyHandler = [&services](const Call &call) { return download(call, services); };
    table->insert(u"file.download"_s, downloading);
}

} // namespace documentserver
