#pragma once

#include "panel/PanelItems.h"

#include <chrono>
#include <functional>

namespace volume
{
class ServerDocuments;
}

/// What the user keeps where, asked of the server. Blocks; any thread.
class UserDocuments
{
public:
    static constexpr qsizetype MaximumDocuments = 20'000;
    static constexpr std::chrono::seconds MaximumTime{20};

    /// `mountPoint`: where the documents are mounted.
    UserDocuments(volume::ServerDocuments &serverDocuments, const QString &mountPoint)
        : documents(serverDocuments), volumePath(mountPoint)
    {
    }

    /// Looks through the folders from the top, as the server has no list of favourites. Incomplete when
    /// the server fails, a bound is reached or `wanted` says no.
    PanelList favorites(const std::function<bool()> &wanted);
    /// The first folder for documents of the user's own, null when the server tells none.
    QString ownFolder();

private:
    volume::ServerDocuments &documents;
    const QString volumePath;
};
