#pragma once

#include "platform/Host.h"

namespace platform
{

/// Folders by the base-directory rules of free desktops; a relative path in a variable counts as unset. The environment
/// is read on every call. Any thread.
class LinuxFolders final : public Folders
{
public:
    QString home() const override;
    QString library() const override;
    QString caches() const override;
    QString fonts() const override;
    /// Null when a stranger holds the name.
    QString temporary() const override;
    QString volumes() const override;
    QString userDefaultsFile() const override;

    /// The base folders themselves, null without a home.
    QString configurationBase() const;
    QString dataBase() const;
};

} // namespace platform
