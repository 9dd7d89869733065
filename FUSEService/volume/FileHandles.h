#pragma once

#include "volume/OpenFile.h"
#include "volume/ReadAhead.h"

#include <memory>
#include <mutex>
#include <unordered_map>

namespace volume
{

/// A file as one program opened it.
struct FileHandle {
    std::shared_ptr<OpenFile> file;
    ReadAhead readAhead;
    bool writes = false;
};

/// The files that programs have open. What is open still when the volume is detached is never closed by the kernel, and
/// goes with this object. Any thread.
class FileHandles
{
public:
    /// Keeps it until it is taken.
    FileHandle *keep(std::unique_ptr<FileHandle> handle)
    {
        FileHandle *const kept = handle.get();
        const std::lock_guard lock(mutex);
        handles.emplace(kept, std::move(handle));
        return kept;
    }
    std::unique_ptr<FileHandle> take(FileHandle *kept)
    {
        const std::lock_guard lock(mutex);
        const auto found = handles.extract(kept);
        return found ? std::move(found.mapped()) : nullptr;
    }

private:
    std::mutex mutex;
    std::unordered_map<FileHandle *, std::unique_ptr<FileHandle>> handles;
};

} // namespace volume
