#include "files/FileHash.h"

#include <QByteArray>
#include <QFile>

#include <libdeflate.h>
#include <openssl/evp.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace
{

constexpr std::size_t chunkSize = 4096;
constexpr std::size_t longestDigest = 64;

class ReadStream
{
public:
    explicit ReadStream(const QString &path)
    {
        const QByteArray name = QFile::encodeName(path);
        if (name.isEmpty() || name.contains('\0'))
            return;
        // Not blocking: opening a pipe without a writer would wait for ever. Regular files do not care.
        descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status;
        regular = descriptor >= 0 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
#ifdef POSIX_FADV_SEQUENTIAL
        if (regular)
            ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
#endif
    }
    ~ReadStream()
    {
        if (descriptor >= 0)
            ::close(descriptor);
    }
    ReadStream(const ReadStream &) = delete;
    ReadStream &operator=(const ReadStream &) = delete;

    bool isOpen() const
    {
        return regular;
    }

    ssize_t read(unsigned char *buffer) const
    {
        ssize_t count;
        do
            count = ::read(descriptor, buffer, chunkSize);
        while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int descriptor = -1;
    bool regular = false;
};

struct LibraryContext {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> computation{EVP_MD_CTX_new(), EVP_MD_CTX_free};
    const EVP_MD *algorithm = nullptr;
};

DigestComputation libraryDigest(LibraryContext &context, std::size_t length)
{
    return {[](void *storage) {
                const auto *state = static_cast<LibraryContext *>(storage);
                return state->algorithm && EVP_DigestInit_ex2(state->computation.get(), state->algorithm, nullptr) == 1;
            },
            [](void *storage, const unsigned char *bytes, std::size_t count) {
                return EVP_DigestUpdate(static_cast<LibraryContext *>(storage)->computation.get(), bytes, count) == 1;
            },
            [](unsigned char *digest, void *storage) {
                return EVP_DigestFinal_ex(static_cast<LibraryContext *>(storage)->computation.get(), digest, nullptr) ==
                       1;
            },
            length, &context};
}

QString libraryHash(const QString &path, const EVP_MD *algorithm, std::size_t length)
{
    LibraryContext context;
    context.algorithm = algorithm;
    return FileHash::hashOfFileAtPath(path, libraryDigest(context, length));
}

bool startCrc(void *context)
{
    *static_cast<quint32 *>(context) = 0;
    return true;
}

bool updateCrc(void *context, const unsigned char *bytes, std::size_t count)
{
    auto &crc = *static_cast<quint32 *>(context);
    crc = libdeflate_crc32(crc, bytes, count);
    return true;
}

bool finishCrc(unsigned char *digest, void *context)
{
    const quint32 crc = *static_cast<quint32 *>(context);
    for (unsigned i = 0; i < 4; ++i)
        digest[i] = static_cast<unsigned char>(crc >> (24 - 8 * i));
    return true;
}

} // namespace

QString FileHash::hashOfFileAtPath(const QString &path, const DigestComputation &computation)
{
    const ReadStream stream(path);
    unsigned char digest[longestDigest];
    if (!stream.isOpen() || computation.digestLength > longestDigest || !computation.initialise(computation.context))
        return {};
    unsigned char chunk[chunkSize];
    ssize_t count;
    while ((count = stream.read(chunk)) > 0) {
        if (!computation.update(computation.context, chunk, static_cast<std::size_t>(count)))
            return {};
    }
    if (!computation.finalise(digest, computation.context) || count < 0)
        return {};
    const QByteArray bytes(reinterpret_cast<const char *>(digest), static_cast<qsizetype>(computation.digestLength));
    return QString::fromLatin1(bytes.toHex().toUpper());
}

// Looking an algorithm up by name costs more than the digest of a small file: once per process, kept to its end.
QString FileHash::md5HashOfFileAtPath(const QString &path)
{
    static const EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "MD5", nullptr);
    return libraryHash(path, algorithm, 16);
}

QString FileHash::sha1HashOfFileAtPath(const QString &path)
{
    static const EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    return libraryHash(path, algorithm, 20);
}

QString FileHash::sha512HashOfFileAtPath(const QString &path)
{
    static const EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "SHA512", nullptr);
    return libraryHash(path, algorithm, 64);
}

QString FileHash::crc32HashOfFileAtPath(const QString &path)
{
    quint32 crc = 0;
    return hashOfFileAtPath(path, {startCrc, updateCrc, finishCrc, 4, &crc});
}
