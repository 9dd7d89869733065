#pragma once

#include <QString>

namespace volume
{

class ServerDocuments;

/// Finds the document behind a shared link in the mounted volume. Blocks on the server and on the volume, so not for
/// the main thread nor for a thread that serves the volume; one thread at a time.
class LinkLocator
{
public:
    /// `documents` outlives it.
    LinkLocator(ServerDocuments &documents, const QString &mountPoint);

    enum class Outcome { Found, NotFound, NoServer };
    struct Answer {
        Outcome outcome = Outcome::NotFound;
        QString folder; ///< full path of the folder that holds the document; of the document itself when it is a folder
    };
    Answer locate(const QString &link);

private:
    QString documentId(const QString &link);
    Answer placeOf(const QString &documentId) const;

    ServerDocuments &documents;
    const QString mountPoint;
};

} // namespace volume
