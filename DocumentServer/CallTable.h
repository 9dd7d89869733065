#pragma once

#include "Call.h"
#include "Services.h"

#include <QHash>

namespace documentserver
{

/// One call of the API.
struct CallEntry {
    CallHandler handler;
    bool needsToken = true;
};

/// "service.method" → call; "ping" has no method.
using CallTable = QHash<QString, CallEntry>;

// Each area adds its calls. The services must outlive the table.
void addSessionCalls(CallTable *table, Services &services);
void addPasswordCalls(CallTable *table, Services &services);
void addConfigurationCalls(CallTable *table, Services &services);
void addUserCalls(CallTable *table, Services &services);
void addUpdateCalls(CallTable *table, Services &services);

/// All of them.
CallTable makeCallTable(Services &services);

} // namespace documentserver
