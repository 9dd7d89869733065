#pragma once

#include <QByteArray>
#include <QString>

/// What the browser engine must be told before its first use in this process. Main thread.
namespace EngineSetup
{

/// Flags of the engine, added to those that are there already.
QByteArray flags(const QByteArray &present, bool isSuperuser);

/// May this process put pages into a sandbox? Always true for the superuser, whose pages run without one.
bool canSandbox();

/// Prepares the engine, once. False when it could only end this process; `error` (may be null) then says why.
bool prepare(QString *error);

} // namespace EngineSetup
