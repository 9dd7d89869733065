#pragma once

#include "platform/Task.h"

#include <QString>

#include <memory>

/// Shows the user a short message although this process has no windows: a small program of the manager's bundle shows
/// it. One at a time, the latest counts; it goes with this object. Main thread.
class Notice
{
public:
    /// `program` may be missing; nothing is shown then.
    explicit Notice(const QString &noticeProgram) : program(noticeProgram) {}
    ~Notice() { hide(); }
    Notice(const Notice &) = delete;
    Notice &operator=(const Notice &) = delete;

    /// One of the names that the program knows.
    void show(const QString &name);

private:
    void hide();

    const QString program;
    std::unique_ptr<platform::Task> shown;
};
