// Megabytes per second of the file digests beside the crypto library fed by the same 4096-byte reads, and of CRC-32
// beside a plain loop over the 256-entry table. The seconds are those of the processor, the file is in memory already:
// other work on the machine disturbs little.
// usage: digests [mebibytes]

#include "files/FileHash.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <openssl/evp.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

namespace
{

constexpr int rounds = 9;
constexpr int readSize = 4096;
using Digest = std::function<QString(const QString &path)>;

/// Reads the file in the same pieces as the product does.
template <class Take> void readPieces(const QString &path, Take take)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    std::array<unsigned char, readSize> bytes;
    for (ssize_t got = 0; (got = read(file, bytes.data(), bytes.size())) > 0;)
        take(bytes.data(), static_cast<size_t>(got));
    close(file);
}

QString bareDigest(const EVP_MD *algorithm, const QString &path)
{
    EVP_MD_CTX *context = EVP_MD_CTX_new();
    EVP_DigestInit_ex(context, algorithm, nullptr);
    readPieces(path, [&](const unsigned char *bytes, size_t length) { EVP_DigestUpdate(context, bytes, length); });
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned length = 0;
    EVP_DigestFinal_ex(context, digest.data(), &length);
    EVP_MD_CTX_free(context);
    const QByteArray result(reinterpret_cast<const char *>(digest.data()), static_cast<qsizetype>(length));
    return QString::fromLatin1(result.toHex().toUpper());
}

QString tableCrc32(const QString &path)
{
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> entries{};
        for (std::uint32_t i = 0; i < entries.size(); ++i) {
            entries[i] = i;
            for (int bit = 0; bit < 8; ++bit)
                entries[i] = (entries[i] >> 1) ^ ((entries[i] & 1) != 0 ? 0xEDB88320U : 0U);
        }
        return entries;
    }();
    std::uint32_t crc = 0xFFFFFFFF;
    readPieces(path, [&](const unsigned char *bytes, size_t length) {
        for (size_t i = 0; i < length; ++i)
            crc = (crc >> 8) ^ table[(crc ^ bytes[i]) & 0xFF];
    });
    return QStringLiteral("%1").arg(~crc, 8, 16, QLatin1Char('0')).toUpper();
}

double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double secondsOf(const Digest &digest, const QString &path, QString &result)
{
    const double start = processorTime();
    result = digest(path);
    return processorTime() - start;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// False when the two do not agree on the digest.
bool compare(const char *name, const QString &path, int mebibytes, const Digest &bare, const Digest &ours)
{
    std::vector<double> bareSpeed;
    std::vector<double> ourSpeed;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        QString expected;
        QString actual;
        bareSpeed.push_back(mebibytes * 1.048576 / secondsOf(bare, path, expected));
        ourSpeed.push_back(mebibytes * 1.048576 / secondsOf(ours, path, actual));
        ratios.push_back(ourSpeed.back() / bareSpeed.back());
        if (expected != actual) {
            std::fprintf(stderr, "%s: %s is not %s\n", name, qPrintable(actual), qPrintable(expected));
            return false;
        }
    }
    std::printf("%-8s  %9.0f  %9.0f  %5.2f\n", name, median(bareSpeed), median(ourSpeed), median(ratios));
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const int mebibytes = argc > 1 ? std::max(1, std::atoi(argv[1])) : 128;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("data"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    QByteArray piece(1024 * 1024, '\0');
    std::uint32_t state = 1;
    for (char &byte : piece)
        byte = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24);
    for (int i = 0; i < mebibytes; ++i)
        if (file.write(piece) != piece.size())
            return 1;
    file.close();

    std::printf("digest    bare MB/s  ours MB/s  ratio\n");
    const auto evp = [](const EVP_MD *algorithm) {
        return [algorithm](const QString &name) { return bareDigest(algorithm, name); };
    };
    const bool agree = compare("MD5", path, mebibytes, evp(EVP_md5()), &FileHash::md5HashOfFileAtPath) &&
                       compare("SHA-1", path, mebibytes, evp(EVP_sha1()), &FileHash::sha1HashOfFileAtPath) &&
                       compare("SHA-512", path, mebibytes, evp(EVP_sha512()), &FileHash::sha512HashOfFileAtPath) &&
                       compare("CRC-32", path, mebibytes, tableCrc32, &FileHash::crc32HashOfFileAtPath);
    return agree ? 0 : 1;
}
