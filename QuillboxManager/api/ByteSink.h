#pragma once

#include <QtGlobal>

/// Takes bytes as they arrive, on the thread that asked for them.
class ByteSink
{
public:
    virtual ~ByteSink() = default;

    /// False ends the transfer, with an error.
    virtual bool write(const char *bytes, qint64 count) = 0;
};
