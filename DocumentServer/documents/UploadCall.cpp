#include "DocumentCalls.h"
#include "Revisions.h"
#include "UploadFraming.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 largestFile = 1LL << 50;
constexpr qint64 latestTime = 9'000'000'000'000'000;

/// Where an upload goes: into the file, or under the name into the folder.
struct Target {
    Place place; ///< the folder, or the file that gets another content
    std::optional<Node> file;
    QString name;

    qint64 sizeBefore() const { return file ? std::max<qint64>(file->size, 0) : 0; }
};

qint64 lengthIn(const QJsonObject &body)
{
    return requiredNumber(body, "length", 0, largestFile);
}

template <class Session> Target targetOf(const DocumentCall<Session> &call)
{
    const auto &body = call.body();
    const OnDuplicate onDuplicate = onDuplicateIn(body, OnDuplicate::Refuse);
    Target target{call.places.find(docidIn(body)), {}, {}};
    if (target.place.node.isFile) {
        if (body.contains("name"_L1) && legalNameIn(body) != target.place.node.name)
            refuseParameter(u"name: the file has another one"_s);
        requireRevisionAllowed(call, target.place);
        target.name = target.place.node.name;
        target.file = target.place.node;
        return target;
    }
    target.name = legalNameIn(body);
    const auto holder = findChild(call.database, target.place.node.id, target.name);
    if (holder && holder->isFile && onDuplicate == OnDuplicate::Overwrite) {
        target.place = call.places.place(*holder);
        requireRevisionAllowed(call, target.place);
        target.file = holder;
        return target;
    }
    if (holder && onDuplicate != OnDuplicate::FreeName)
        refuseTakenName(*holder);
    target.place.require(MayCreate);
    call.places.requireChangeable(target.place, Places::Change::Upload);
    if (holder)
        target.name = freeNameBelow(call.database, target.place.node.id, target.name, true);
    return target;
}

/// Receives the body of an upload straight into a file that becomes the content of a document only at the very end.
class UploadReceiver : public BodyReceiver
{
public:
    UploadReceiver(const Call &request, Services &all, const QByteArray &boundary)
        : call(request), services(all), framing(
                                            boundary, [this](const QByteArray &text) { return begin(text); },
                                            [this](const char *data, qint64 length) { content->write(data, length); })
    {
    }

    void take(const char *data, qsizetype length) override;
    Reply finish() override;
    bool wantsMore() const override { return !problem; }

private:
    qint64 begin(const QByteArray &text);
    QJsonObject store();
    Node newFile(const WritingCall &request, const Target &target) const;

    Call call;
    Services &services;
    UploadFraming framing;
    std::optional<ApiError> problem;
    std::optional<qint64> clientTime;
    std::unique_ptr<ContentWriter> content;
    std::unique_ptr<Reservations::Hold> reserved;
};

/// What comes after a refusal is read and thrown away, for a client listens only when it has sent everything.
void UploadReceiver::take(const char *data, qsizetype length)
{
    if (problem)
        return;
    try {
        framing.take(data, length);
    } catch (const ApiError &error) {
        problem = error;
        content.reset();
        reserved.reset();
    }
}

/// Refuses as early as possible what would be refused at the end.
qint64 UploadReceiver::begin(const QByteArray &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        throw ApiError{NotJson, {}, u"the description of the upload"_s, {}};
    call.body = document.object();
    const qint64 length = lengthIn(call.body);
    if (call.body.contains("client_mtime"_L1))
        clientTime = requiredNumber(call.body, "client_mtime", 0, latestTime);
    const qint64 limit = call.scenario->number("documents.size_limit");
    if (limit > 0 && length > limit)
        throw ApiError{SizeLimit, {}, {}, {{u"limit"_s, limit}}};
    const ReadingCall request(call, services);
    const Target target = targetOf(request);
    request.places.requireLegalType(target.name, Places::Change::Upload);
    const Entry &entry = target.place.entry;
    const qint64 free = quotaOf(entry, request.caller.account, *call.scenario) - entry.used;
    reserved = services.documents.reservations.hold(entry.root, length - target.sizeBefore(), free);
    if (!reserved)
        throw ApiError{QuotaExceeded, {}, {}, {}};
    content = services.documents.contents.write();
    return length;
}

Reply UploadReceiver::finish()
{
    try {
        if (problem)
            throw ApiError(*problem);
        framing.finish();
        content->finish();
        const QJsonObject record = store();
        if (content->size() > 0)
            services.documents.contents.settle(content->content());
        services.documents.sweep();
        return replyWith(record);
    } catch (const ApiError &error) {
        return replyFor(error);
    }
}

Node UploadReceiver::newFile(const WritingCall &request, const Target &target) const
{
    Node file;
    file.parent = target.place.node.id;
    file.home = target.place.entry.key;
    file.name = target.name;
    file.isFile = true;
    file.size = 0;
    file.created = request.now;
    file.creator = request.caller.name;
    file.creatorAccount = request.caller.account.name();
    return file;
}

/// Meanwhile anything may have changed, so everything is looked at again.
QJsonObject UploadReceiver::store()
{
    WritingCall request(call, services);
    const Target target = targetOf(request);
    const Entry &entry = target.place.entry;
    const qint64 growth = content->size() - target.sizeBefore();
    requireRoomFor(growth, quotaOf(entry, request.caller.account, *call.scenario) - entry.used);
    Node file = target.file ? *target.file : newFile(request, target);
    if (!target.file) {
        insertNode(request.database, &file);
        touchFolder(request.database, file.parent, request.now);
    }
    Revision revision{0,
                      file.name,
                      content->size(),
                      request.now,
                      clientTime.value_or(request.now),
                      request.caller.name,
                      content->size() > 0 ? content->content() : u""_s};
    addRevision(request.database, &file, &revision, mostRevisions(request));
    changeUsed(request.database, entry.root, growth);
    request.session.commit();
    if (content->size() > 0)
        content->keep();
    reserved.reset();
    return recordOf(file);
}
} // namespace

void addUploadCall(CallTable *table, Services &services)
{
    CallEntry upload;
    upload.receiver = [&services](const Call &call, const RequestHead &head) -> std::unique_ptr<BodyReceiver> {
        const QByteArray boundary = boundaryIn(head.contentType);
        if (boundary.isEmpty())
            refuseParameter(u"Content-Type: no boundary"_s);
        callerOf(call, services);
        return std::make_unique<UploadReceiver>(call, services, boundary);
    };
    table->insert(u"file.upload"_s, upload);
}

} // namespace documentserver
