#include "Router.h"

#include <QJsonDocument>
#include <QUrlQuery>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr size_t mostRemembered = 10'000;
constexpr qsizetype longestName = 64;
constexpr qsizetype largestBody = 1024 * 1024;

/// The service that the path names, in the current form of addresses or the older one; null for any other path.
QString serviceOf(const QString &path)
{
    for (const QLatin1String prefix : {"/api/v1/"_L1, "/v1/"_L1})
        if (path.startsWith(prefix))
            return path.mid(prefix.size());
    return {};
}

QJsonObject parseBody(const QByteArray &bytes)
{
    if (bytes.trimmed().isEmpty())
        return {};
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &problem);
    if (!document.isObject())
        throw ApiError{NotJson, {}, problem.error == QJsonParseError::NoError ? QString() : problem.errorString(), {}};
    return document.object();
}

/// The scenario's answer instead of the call's own: a code, an HTTP status, a whole error or any text.
std::optional<Reply> plannedFailure(const QJsonValue &plan, bool inArray)
{
    if (plan.isUndefined())
        return std::nullopt;
    const QJsonObject object = plan.toObject();
    const int number = plan.isDouble() ? plan.toInt() : object.value("errcode"_L1).toInt();
    const int status = plan.isDouble() && number < 1000 ? number : object.value("http"_L1).toInt();
    if (object.contains("raw"_L1))
        return Reply{status > 0 ? status : 200, object.value("raw"_L1).toString().toUtf8()};
    if (number < 1000)
        return Reply{status > 0 ? status : 500, "<html><body>Planned failure</body></html>", "text/html"};
    return replyFor(ApiError{number, object.value("errmsg"_L1).toString(), object.value("causemsg"_L1).toString(),
                             object.value("detail"_L1).toObject(), status},
                    inArray);
}

Call callFor(const RequestHead &head)
{
    const QUrlQuery items(QString::fromUtf8(head.query));
    const auto item = [&items](const QString &key) { return items.queryItemValue(key, QUrl::FullyDecoded); };
    Call call;
    call.service = serviceOf(head.path);
    call.method = item(u"method"_s);
    call.token = item(u"tokenid"_s);
    call.signature = item(u"sign"_s);
    call.userid = item(u"userid"_s);
    call.origin = head.origin;
    call.page = head.page;
    return call;
}

/// How browsers name a page out of a file.
bool isLocalFile(const QByteArray &origin)
{
    return origin == "null" || origin == "file://";
}

/// Where the scenario cuts the call off; -1: nowhere.
qint64 plannedCut(const Call &call, const QString &name)
{
    const QJsonValue bytes = call.scenario->object("cut").value(name);
    return bytes.isDouble() ? std::max<qint64>(0, bytes.toInteger()) : -1;
}

/// Reads past the body of a request whose answer is known already.
class DiscardingReceiver : public BodyReceiver
{
public:
    explicit DiscardingReceiver(Reply known) : reply(std::move(known)) {}
    void take(const char *, qsizetype) override {}
    Reply finish() override { return reply; }
    bool wantsMore() const override { return false; }

private:
    const Reply reply;
};

Reply reported(const ApiError &error, const QString &name, bool inArray)
{
    if (error.code == InternalError)
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(name), qPrintable(error.cause));
    return replyFor(error, inArray);
}
} // namespace

/// Keeps a body of ordinary size until it is complete, and reads past what is more than that.
class CollectingReceiver : public BodyReceiver
{
public:
    CollectingReceiver(Router &all, QString callName, Call request)
        : router(all), name(std::move(callName)), call(std::move(request))
    {
    }

    void take(const char *data, qsizetype length) override
    {
        isTooLarge = isTooLarge || call.bytes.size() + length > largestBody;
        if (!isTooLarge)
            call.bytes.append(data, length);
    }

    Reply finish() override
    {
        if (isTooLarge)
            return replyFor(ApiError{TooLarge, {}, {}, {}});
        return router.answer(name, &call);
    }

    bool wantsMore() const override { return !isTooLarge; }

private:
    Router &router;
    const QString name;
    Call call;
    bool isTooLarge = false;
};

std::unique_ptr<BodyReceiver> Router::receive(const RequestHead &head)
{
    Call call = callFor(head);
    const QString name = call.service == "ping"_L1 ? call.service : call.service + u'.' + call.method;
    remember(name.left(longestName));
    try {
        return receiver(head, name, &call);
    } catch (const ApiError &error) {
        return std::make_unique<DiscardingReceiver>(reported(error, name, answersWithArray(name)));
    }
}

std::unique_ptr<BodyReceiver> Router::receiver(const RequestHead &head, const QString &name, Call *call)
{
    call->scenario = services.scenario.current();
    const auto entry = table.constFind(name);
    if (entry == table.constEnd() || !entry->receiver)
        return std::make_unique<CollectingReceiver>(*this, name, std::move(*call));
    if (auto planned = plannedFailure(call->scenario->object("fail").value(name), false))
        return std::make_unique<DiscardingReceiver>(std::move(*planned));
    admit(name, call);
    auto made = entry->receiver(*call, head);
    made->cutAfter = plannedCut(*call, name);
    return made;
}

bool Router::answersWithArray(const QString &name) const
{
    const auto entry = table.constFind(name);
    return entry != table.constEnd() && entry->answersWithArray;
}

const CallEntry &Router::admit(const QString &name, Call *call)
{
    const auto entry = table.constFind(name);
    if (entry == table.constEnd())
        throw ApiError{UnknownMethod, {}, {}, {}};
    if (!call->token.isEmpty())
        call->session = services.sessions.find(call->token);
    const bool isOthers = call->session && !call->userid.isEmpty() && call->userid != call->session->userid;
    if (entry->needsToken && (!call->session || isOthers))
        throw ApiError{TokenInvalid, {}, {}, {}};
    return *entry;
}

Reply Router::answer(const QString &name, Call *call)
{
    const bool inArray = answersWithArray(name);
    const auto entry = table.constFind(name);
    const bool isForPages = entry != table.constEnd() && entry->isForPages;
    const auto complete = [&](Reply reply) {
        reply.cutAfter = plannedCut(*call, name);
        if (isForPages && isLocalFile(call->page))
            reply.headers.emplace_back("Access-Control-Allow-Origin", call->page);
        return reply;
    };
    try {
        if (const auto planned = plannedFailure(call->scenario->object("fail").value(name), inArray))
            return complete(*planned);
        const CallEntry &admitted = admit(name, call);
        call->body = parseBody(call->bytes);
        return complete(admitted.handler ? replyWith(admitted.handler(*call)) : admitted.replyHandler(*call));
    } catch (const ApiError &error) {
        return complete(reported(error, name, inArray));
    }
}

void Router::remember(const QString &name)
{
    const std::lock_guard lock(mutex);
    seen.push_back(name);
    if (seen.size() > mostRemembered)
        seen.pop_front();
}

QStringList Router::calls() const
{
    const std::lock_guard lock(mutex);
    return QStringList(seen.begin(), seen.end());
}

void Router::clearCalls()
{
    const std::lock_guard lock(mutex);
    seen.clear();
}

} // namespace documentserver
