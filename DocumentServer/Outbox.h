#pragma once

#include "Server.h"
#include "Sessions.h"

#include <mutex>

namespace documentserver
{

/// Where codes by SMS and e-mail go: a file, standard output, and the newest ones in memory. Any thread.
class Outbox
{
public:
    /// An empty file name writes no file.
    Outbox(QString path, bool toConsole, Clock clock) : file(std::move(path)), print(toConsole), now(std::move(clock))
    {
    }

    /// False when the file cannot be written; the code then counts as not sent.
    bool deliver(const SentCode &code);
    /// Writes what was not sent but shown, the solution of a picture, to the file alone.
    void note(const SentCode &code) const;
    QList<SentCode> newest() const;

private:
    bool append(const SentCode &code) const;

    mutable std::mutex mutex;
    QString file;
    bool print = false;
    Clock now;
    QList<SentCode> sent;
};

} // namespace documentserver
