#pragma once

#include <QString>

#include <array>
#include <cstddef>

namespace shell
{

/// A folder of crash reports named "error<seconds since 1970>.log". Writing takes no lock, no memory from the heap and
/// nothing else that a signal handler may not use; any thread, several at once.
class CrashFolder
{
public:
    /// So many reports stay; with one more there the folder is emptied before the next.
    static constexpr int mostReports = 10'000;

    /// Remembers the path, which need not exist; a path too long for the system is as good as none.
    void setPath(const QString &path);

    /// Puts a report's text into the open file.
    using Fill = bool (*)(int file, const void *what);
    /// A report appears whole or not at all.
    bool write(Fill fill, const void *what) const;

private:
    static constexpr std::size_t longestPath = 4096;

    bool makeFolders() const;
    int open() const;

    std::array<char, longestPath> path{};
};

/// All bytes; fit for a signal handler.
bool writeBytes(int file, const char *bytes, std::size_t count);

} // namespace shell
