#pragma once

#include "Credentials.h"
#include "Flags.h"
#include "PasswordReset.h"
#include "PictureCodes.h"
#include "Scenario.h"
#include "SecondFactor.h"
#include "Server.h"
#include "documents/Documents.h"
#include "pages/Tickets.h"

#include <atomic>

namespace documentserver
{

/// Everything the calls work with; lives as long as the server.
struct Services {
    explicit Services(const Options &options);

    /// Opens or makes the files in the data folder. False with a text in *error.
    bool open(QString *error);

    Options options;
    Clock now;
    Database database;
    Accounts accounts;
    PasswordKey passwordKey;
    ScenarioSource scenario;
    Sessions sessions;
    Attempts attempts;
    Flags flags;
    PictureCodes pictureCodes;
    Outbox outbox;
    SecondFactor secondFactor;
    Credentials credentials;
    PasswordReset passwordReset;
    Tickets tickets;
    Documents documents;
    std::atomic<int> httpPort = -1;
    std::atomic<int> httpsPort = -1;
};

} // namespace documentserver
