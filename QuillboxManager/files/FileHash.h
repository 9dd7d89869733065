#pragma once

#include <QString>

#include <cstddef>

/// One digest algorithm with the storage of one computation. Every function returns false when it fails; `context` is
/// what they are handed.
struct DigestComputation {
    bool (*initialise)(void *context);
    bool (*update)(void *context, const unsigned char *bytes, std::size_t length);
    bool (*finalise)(unsigned char *digest, void *context);
    std::size_t digestLength; ///< bytes, at most 64
    void *context;
};

/// Digests of whole files as upper-case hexadecimal. They read as long as the file is large, so background pool only;
/// at most 4096 bytes of the file are in memory. Null when the file cannot be opened or read or is no regular file.
class FileHash
{
public:
    static QString md5HashOfFileAtPath(const QString &path);
    static QString sha1HashOfFileAtPath(const QString &path);
    static QString sha512HashOfFileAtPath(const QString &path);
    /// Eight digits that read as the usual CRC-32 number.
    static QString crc32HashOfFileAtPath(const QString &path);
    static QString hashOfFileAtPath(const QString &path, const DigestComputation &computation);
};
