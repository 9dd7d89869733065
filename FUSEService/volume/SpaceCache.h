#pragma once

#include "volume/DocumentStore.h"

#include <chrono>
#include <mutex>
#include <optional>

struct statvfs;

namespace volume
{

/// The account's quota, asked for at most every half minute. Any thread.
class SpaceCache
{
public:
    explicit SpaceCache(DocumentStore &documents) : store(documents) {}

    /// The last answer when the server does not answer now; throws Errno when there never was one.
    Space space();

private:
    DocumentStore &store;
    std::mutex mutex; ///< guards what follows; not held during a call
    std::optional<Space> known;
    std::chrono::steady_clock::time_point asked;
};

/// The quota in the form programs ask for. A quota of 0 means that there is none.
struct statvfs volumeStatus(const Space &space);

} // namespace volume
