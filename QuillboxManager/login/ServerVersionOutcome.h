#pragma once

#include "api/QBNetworking.h"

/// What follows from the version check after a server was accepted. Stateless; any thread.
namespace ServerVersionOutcome
{

enum class Kind {
    IllegalParameter, ///< the server did not understand us
    ShowError,        ///< the error's own description
    Finish,           ///< this version is welcome
    AskForUpdate,     ///< the update window has the say
};

Kind of(const QBError &error, const ServerReply &reply);

} // namespace ServerVersionOutcome
