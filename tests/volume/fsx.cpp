// Random operations on a file of the volume and on a local twin, which must never differ.
//   fsx [--seconds N | --minutes N] [--seed N] FILE TWIN
// Prints the seed; ends with 1 and the last operations at the first difference.

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr long largestFile = 3 * 1024 * 1024;
constexpr long largestPiece = 200 * 1024;

class Checker
{
public:
    Checker(std::string fileName, std::string twinName, unsigned seed)
        : file(std::move(fileName)), twin(std::move(twinName)), random(seed)
    {
    }

    bool begin() { return open(O_CREAT | O_TRUNC) && sameSize(); }
    bool step();
    bool finish() { return compareAll() && close(); }
    void report() const
    {
        for (const std::string &line : history)
            std::fprintf(stderr, "%s\n", line.c_str());
    }
    long operations() const { return count; }

private:
    long upTo(long limit) { return limit <= 0 ? 0 : static_cast<long>(random() % static_cast<unsigned long>(limit)); }
    void note(const char *what, long offset, long length)
    {
        history.push_back("#" + std::to_string(++count) + " " + what + " " + std::to_string(offset) + " +" +
                          std::to_string(length) + ", size " + std::to_string(size));
        if (history.size() > 40)
            history.pop_front();
    }
    bool fail(const char *what)
    {
        history.push_back(std::string("FAILED: ") + what + ": " + std::strerror(errno));
        return false;
    }

    bool open(int more)
    {
        fileHandle = ::open(file.c_str(), O_RDWR | more, 0600);
        twinHandle = ::open(twin.c_str(), O_RDWR | more, 0600);
        return (fileHandle >= 0 && twinHandle >= 0) || fail("open");
    }
    bool close()
    {
        const bool closed = ::close(fileHandle) == 0;
        return ::close(twinHandle) == 0 && (closed || fail("close"));
    }
    bool sameSize()
    {
        struct stat one = {};
        struct stat two = {};
        if (::fstat(fileHandle, &one) != 0 || ::fstat(twinHandle, &two) != 0)
            return fail("fstat");
        errno = 0;
        size = two.st_size;
        return one.st_size == two.st_size || fail("the sizes differ");
    }
    std::vector<char> bytes(long length)
    {
        std::vector<char> made(static_cast<std::size_t>(length));
        for (char &byte : made)
            byte = static_cast<char>(random());
        return made;
    }
    bool put(int handle, const std::vector<char> &data, long offset)
    {
        return ::pwrite(handle, data.data(), data.size(), offset) == static_cast<ssize_t>(data.size()) || fail("write");
    }
    bool write(long offset)
    {
        const std::vector<char> data = bytes(1 + upTo(largestPiece));
        note("write", offset, static_cast<long>(data.size()));
        return put(fileHandle, data, offset) && put(twinHandle, data, offset);
    }
    bool compare(long offset, long length)
    {
        std::vector<char> one(static_cast<std::size_t>(length));
        std::vector<char> two(one);
        const ssize_t gotOne = ::pread(fileHandle, one.data(), one.size(), offset);
        const ssize_t gotTwo = ::pread(twinHandle, two.data(), two.size(), offset);
        if (gotOne < 0 || gotTwo < 0)
            return fail("read");
        errno = 0;
        return (gotOne == gotTwo && one == two) || fail("the contents differ");
    }
    bool compareAll()
    {
        note("compare all", 0, size);
        return compare(0, size + 10);
    }
    bool read()
    {
        const long offset = upTo(size + 100);
        const long length = 1 + upTo(largestPiece);
        note("read", offset, length);
        return compare(offset, length);
    }
    bool truncate()
    {
        const long wanted = upTo(2) == 0 ? upTo(size + 1) : upTo(largestFile);
        note("truncate", wanted, 0);
        return (::ftruncate(fileHandle, wanted) == 0 && ::ftruncate(twinHandle, wanted) == 0) || fail("truncate");
    }
    bool truncateByName()
    {
        const long wanted = upTo(size + 1);
        note("truncate by name", wanted, 0);
        return (::truncate(file.c_str(), wanted) == 0 && ::truncate(twin.c_str(), wanted) == 0) || fail("truncate");
    }
    bool sync()
    {
        note("fsync", 0, 0);
        return ::fsync(fileHandle) == 0 || fail("fsync");
    }
    bool reopen()
    {
        note("reopen", 0, 0);
        return close() && open(0);
    }
    bool rename()
    {
        note("rename", 0, 0);
        const std::string other = file + ".renamed";
        return (::rename(file.c_str(), other.c_str()) == 0 && ::rename(other.c_str(), file.c_str()) == 0) ||
               fail("rename");
    }
    bool replace()
    {
        note("replace by a copy", 0, size);
        const std::string other = file + ".copy";
        std::vector<char> all(static_cast<std::size_t>(size));
        if (::pread(twinHandle, all.data(), all.size(), 0) != size)
            return fail("read of the twin");
        const int handle = ::open(other.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
        if (handle < 0 || !put(handle, all, 0) || ::close(handle) != 0)
            return fail("write of the copy");
        return (close() && ::rename(other.c_str(), file.c_str()) == 0 && open(0)) || fail("replace");
    }
    bool mapped(bool writes);

    const std::string file;
    const std::string twin;
    std::mt19937 random;
    std::deque<std::string> history;
    int fileHandle = -1;
    int twinHandle = -1;
    long size = 0;
    long count = 0;
};

bool Checker::mapped(bool writes)
{
    if (size == 0)
        return true;
    const long offset = upTo(size);
    const long length = 1 + upTo(std::min(size - offset, largestPiece));
    note(writes ? "mapped write" : "mapped read", offset, length);
    void *const map = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | (writes ? PROT_WRITE : 0), MAP_SHARED,
                             fileHandle, 0);
    if (map == MAP_FAILED)
        return fail("mmap");
    char *const place = static_cast<char *>(map) + offset;
    bool same = true;
    if (writes) {
        const std::vector<char> data = bytes(length);
        std::memcpy(place, data.data(), data.size());
        same = ::msync(map, static_cast<std::size_t>(size), MS_SYNC) == 0 && put(twinHandle, data, offset);
    } else {
        std::vector<char> expected(static_cast<std::size_t>(length));
        same = ::pread(twinHandle, expected.data(), expected.size(), offset) == length &&
               std::memcmp(place, expected.data(), expected.size()) == 0;
    }
    ::munmap(map, static_cast<std::size_t>(size));
    return same || fail("mapped access");
}

bool Checker::step()
{
    const auto operate = [this] {
        switch (upTo(24)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
            return write(upTo(std::min(size + largestPiece, largestFile)));
        case 6:
        case 7:
            return size < largestFile ? write(size) : read();
        case 8:
        case 9:
            return truncate();
        case 10:
            return truncateByName();
        case 11:
            return sync();
        case 12:
            return reopen();
        case 13:
            return rename();
        case 14:
            return replace();
        case 15:
        case 16:
            return mapped(true);
        case 17:
        case 18:
            return mapped(false);
        default:
            return read();
        }
    };
    return operate() && sameSize() && (count % 50 != 0 || compareAll());
}

} // namespace

int main(int argc, char **argv)
{
    long seconds = 5;
    unsigned seed = std::random_device()();
    int at = 1;
    for (; at + 1 < argc && argv[at][0] == '-'; at += 2) {
        const std::string option = argv[at];
        const long value = std::atol(argv[at + 1]);
        if (option == "--seconds")
            seconds = value;
        else if (option == "--minutes")
            seconds = value * 60;
        else if (option == "--seed")
            seed = static_cast<unsigned>(value);
    }
    if (argc - at != 2) {
        std::fputs("usage: fsx [--seconds N | --minutes N] [--seed N] FILE TWIN\n", stderr);
        return 2;
    }
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    Checker checker(argv[at], argv[at + 1], seed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    bool same = checker.begin();
    while (same && std::chrono::steady_clock::now() < end)
        same = checker.step();
    same = same && checker.finish();
    std::printf("%ld operations, %s\n", checker.operations(), same ? "no difference" : "DIFFERENT");
    if (!same)
        checker.report();
    return same ? 0 : 1;
}
