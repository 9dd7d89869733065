#pragma once

#include <QJsonObject>

namespace documentserver
{

/// Every setting a scenario may hold, with the value it has when the scenario does not name it.
QJsonObject scenarioDefaults();

} // namespace documentserver
