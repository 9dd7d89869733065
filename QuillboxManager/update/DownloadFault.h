#pragma once

#include "api/QBError.h"

#include <QString>

/// Why no image was kept, beyond what the transport tells.
enum class DownloadFault {
    None,
    HttpStatus,  ///< the server refused; `detail` is the status
    NotAnImage,  ///< a page or another document came instead
    Incomplete,  ///< empty, or of a length nobody announced, so that nobody could tell its end
    NameRefused, ///< `detail` is no name for a file
    TargetTaken, ///< something other than a file has the name `detail`
    NotYours,    ///< this user may not replace the application
    NoSpace,     ///< the disk is full, or would be
    CannotStore, ///< the folder or the file in it cannot be made or written
    NoInstaller, ///< the helper could not be started; `detail` is the image
};

/// What the user is told, in a line. Any thread.
QString downloadFaultText(DownloadFault fault, const QString &detail = {});
