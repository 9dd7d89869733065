#include "CallTable.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

CallTable makeCallTable(Services &services)
{
    CallTable table;
    table.insert(u"ping"_s, {[](const Call &) { return QJsonObject(); }, false});
    addSessionCalls(&table, services);
    addPasswordCalls(&table, services);
    addConfigurationCalls(&table, services);
    addUserCalls(&table, services);
    addUpdateCalls(&table, services);
    addDocumentCalls(&table, services);
    return table;
}

} // namespace documentserver
