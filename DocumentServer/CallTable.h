#pragma once

#include "Call.h"
#include "Reply.h"
#include "Services.h"

#include <QHash>

#include <functional>
#include <memory>

namespace documentserver
{

/// Answers with something other than an object, or throws ApiError.
using ReplyHandler = std::function<Reply(const Call &)>;
/// Takes the body of the call as it comes. The call has no body yet; its token was checked. May throw ApiError.
using ReceiverMaker = std::function<std::unique_ptr<BodyReceiver>(const Call &, const RequestHead &)>;

/// One call of the API: exactly one of the three handlers is there.
struct CallEntry {
    CallHandler handler;
    bool needsToken = true;
    ReplyHandler replyHandler;
    ReceiverMaker receiver;
    bool answersWithArray = false; ///< errors come as the only element of an array
    bool isForPages = false;       ///< a page out of a local file may read the replies
};

/// "service.method" → call; "ping" has no method.
using CallTable = QHash<QString, CallEntry>;

// Each area adds its calls. The services must outlive the table.
void addSessionCalls(CallTable *table, Services &services);
void addPasswordCalls(CallTable *table, Services &services);
void addConfigurationCalls(CallTable *table, Services &services);
void addUserCalls(CallTable *table, Services &services);
void addUpdateCalls(CallTable *table, Services &services);
void addDocumentCalls(CallTable *table, Services &services);

/// All of them.
CallTable makeCallTable(Services &services);

} // namespace documentserver
