#pragma once

#include "platform/Bundle.h"

#include <QString>

/// Where an update comes by.
struct UpdatePlaces {
    QString downloads;     ///< folder of downloaded images
    QString installerCopy; ///< the helper, outside of the bundle that it replaces
    QString volumes;       ///< folder in which images appear
    QString diskImageTool;
    platform::Bundle bundle; ///< of the running application

    static UpdatePlaces ofHost();
    QString installerProgram() const { return installerCopy + QStringLiteral("/Contents/MacOS/appInstall"); }
};
