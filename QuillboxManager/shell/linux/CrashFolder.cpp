#include "shell/CrashFolder.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace shell
{

namespace
{

/// One entry as the kernel lists it.
struct ListedEntry {
    std::uint64_t inode;
    std::int64_t offset;
    unsigned short length;
    unsigned char type;
    char name[1];
};

/// Calls `visit` with the name of every entry but "." and "..".
template <class Visit> void forEachEntry(int folder, Visit visit)
{
    alignas(ListedEntry) char buffer[8192];
    ::lseek(folder, 0, SEEK_SET);
    for (;;) {
        const long got = ::syscall(SYS_getdents64, folder, buffer, sizeof buffer);
        if (got <= 0)
            return;
        for (long position = 0; position < got;) {
            const auto *entry = reinterpret_cast<const ListedEntry *>(buffer + position);
            const char *name = buffer + position + offsetof(ListedEntry, name);
            position += entry->length;
            if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
                visit(name);
        }
    }
}

void emptyWhenFull(int folder)
{
    int count = 0;
    forEachEntry(folder, [&count](const char *) { ++count; });
    if (count <= CrashFolder::mostReports)
        return;
    forEachEntry(folder, [folder](const char *name) {
        if (::unlinkat(folder, name, 0) != 0)
            ::unlinkat(folder, name, AT_REMOVEDIR);
    });
}

/// "<prefix><seconds>.<six digits><suffix>".
struct ReportName {
    ReportName(const char *prefix, const timespec &time, const char *suffix)
    {
        append(prefix);
        appendNumber(static_cast<std::uint64_t>(time.tv_sec), 1);
        append(".");
        appendNumber(static_cast<std::uint64_t>(time.tv_nsec / 1000), 6);
        append(suffix);
    }

    void append(const char *more)
    {
        while (*more != '\0' && length + 1 < sizeof text)
            text[length++] = *more++;
    }
    void appendNumber(std::uint64_t number, int digits)
    {
        char reversed[24];
        int count = 0;
        for (; number > 0 || count < digits; number /= 10)
            reversed[count++] = static_cast<char>('0' + number % 10);
        while (count > 0 && length + 1 < sizeof text)
            text[length++] = reversed[--count];
    }

    char text[96] = {};
    std::size_t length = 0;
};

} // namespace

bool writeBytes(int file, const char *bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

void CrashFolder::setPath(const QString &folder)
{
    const QByteArray encoded = QFile::encodeName(folder);
    path.fill('\0');
    if (static_cast<std::size_t>(encoded.size()) < path.size())
        std::copy(encoded.begin(), encoded.end(), path.begin());
}

bool CrashFolder::makeFolders() const
{
    if (path.front() != '/')
        return false;
    std::array<char, longestPath> outer = path;
    for (std::size_t end = 1; end < outer.size(); ++end) {
        if (path[end] != '/' && path[end] != '\0')
            continue;
        outer[end] = '\0';
        ::mkdir(outer.data(), 0700);
        outer[end] = path[end];
        if (path[end] == '\0')
            return true;
    }
    return false;
}

int CrashFolder::open() const
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const int folder = ::open(path.data(), flags);
    return folder < 0 && makeFolders() ? ::open(path.data(), flags) : folder;
}

bool CrashFolder::write(Fill fill, const void *what) const
{
    const int folder = open();
    if (folder < 0)
        return false;
    emptyWhenFull(folder);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    ReportName unfinished(".error", now, ".");
    unfinished.appendNumber(static_cast<std::uint64_t>(::syscall(SYS_gettid)), 1);
    const ReportName name("error", now, ".log");
    const int file = ::openat(folder, unfinished.text, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    bool done = file >= 0 && fill(file, what);
    if (file >= 0 && ::close(file) != 0)
        done = false;
    done = done && ::renameat(folder, unfinished.text, folder, name.text) == 0;
    if (!done && file >= 0)
        ::unlinkat(folder, unfinished.text, 0);
    ::close(folder);
    return done;
}

} // namespace shell
