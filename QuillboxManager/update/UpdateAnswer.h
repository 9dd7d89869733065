#pragma once

#include "api/QBNetworking.h"

#include <QString>

/// What the server said about this version, read from its answer without trusting it. Stateless; any thread.
namespace UpdateAnswer
{

/// The update may not be put off.
bool isForced(const ServerReply &answer);
/// The newest version; null when the answer tells none.
QString latest(const ServerReply &answer);
/// Last path component of the installer's location: the name under which it is kept. Empty when the answer tells none.
/// Whether it may be a file's name is another question (DownloadTarget).
QString imageName(const ServerReply &answer);

} // namespace UpdateAnswer
