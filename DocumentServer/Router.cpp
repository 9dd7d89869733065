#include "Router.h"

#include <QJsonDocument>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr size_t mostRemembered = 10'000;
constexpr qsizetype longestName = 64;

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

Reply replyWith(const QJsonObject &object, int status)
{
    return {status, QJsonDocument(object).toJson(QJsonDocument::Compact)};
}

/// The scenario's answer instead of the call's own: a code, an HTTP status, a whole error or any text.
std::optional<Reply> plannedFailure(const QJsonValue &plan)
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
                             object.value("detail"_L1).toObject(), status});
}
} // namespace

Reply replyFor(const ApiError &error)
{
    return replyWith(errorReply(error), httpStatus(error));
}

Reply Router::handle(const QString &path, const QByteArray &query, const QByteArray &body)
{
    const QUrlQuery items(QString::fromUtf8(query));
    const auto item = [&items](const QString &key) { return items.queryItemValue(key, QUrl::FullyDecoded); };
    Call call;
    call.service = serviceOf(path);
    call.method = item(u"method"_s);
    call.token = item(u"tokenid"_s);
    call.signature = item(u"sign"_s);
    call.userid = item(u"userid"_s);
    call.bytes = body;
    const QString name = call.service == "ping"_L1 ? call.service : call.service + u'.' + call.method;
    try {
        call.scenario = services.scenario.current();
        remember(name.left(longestName));
        if (const auto planned = plannedFailure(call.scenario->object("fail").value(name)))
            return *planned;
        return replyWith(answer(&call, name), 200);
    } catch (const ApiError &error) {
        if (error.code == InternalError)
            std::fprintf(stderr, "%s failed: %s\n", qPrintable(name), qPrintable(error.cause));
        return replyFor(error);
    }
}

QJsonObject Router::answer(Call *call, const QString &name)
{
    const auto entry = table.constFind(name);
    if (entry == table.constEnd())
        throw ApiError{UnknownMethod, {}, {}, {}};
    if (!call->token.isEmpty())
        call->session = services.sessions.find(call->token);
    const bool isOthers = call->session && !call->userid.isEmpty() && call->userid != call->session->userid;
    if (entry->needsToken && (!call->session || isOthers))
        throw ApiError{TokenInvalid, {}, {}, {}};
    call->body = parseBody(call->bytes);
    return entry->handler(*call);
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
