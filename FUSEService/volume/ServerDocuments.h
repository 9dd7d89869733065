#pragma once

#include "volume/DocumentStore.h"

#include "api/DocumentTransfer.h"
#include "api/HttpTransport.h"
#include "api/QBNetworking.h"

#include <QSet>

#include <chrono>
#include <functional>
#include <mutex>

class QBGlobeInformation;
namespace platform
{
class UserDefaults;
}

namespace volume
{

/// The documents on the server of the stored session. A call that the server refuses because of the token is tried once
/// more with a renewed one; a call that fails leaves one line in the log. A server that let a call wait in vain and
/// answered none meanwhile is left alone for some seconds, so that a program with many calls fails soon. Any thread.
class ServerDocuments : public DocumentStore
{
public:
    ServerDocuments(QBGlobeInformation &session, platform::UserDefaults &defaults,
                    std::chrono::milliseconds callTimeout);

    /// Ends the calls in progress; later ones fail at once. Any thread.
    void shutDown();

    QList<Document> entries() override;
    QList<Document> list(const QString &folderId) override;
    void read(const Document &document, qint64 offset, qint64 length, ByteSink &into) override;
    Document createFile(const QString &folderId, const QString &name, ByteSource &contents, qint64 modified) override;
    Document replaceContents(const QString &id, ByteSource &contents, qint64 modified) override;
    Document createFolder(const QString &folderId, const QString &name) override;
    void remove(const Document &document) override;
    void rename(const Document &document, const QString &name) override;
    QString move(const Document &document, const QString &folderId) override;
    void lock(const QString &id) override;
    void unlock(const QString &id) override;
    Space space() override;

    /// The document's path on the server, entry document first.
    QString pathOf(const QString &id);
    /// What the server's own links begin with, empty when it has no such thing.
    QString internalLinkPrefix();
    /// The ids of those that are the user's favourites.
    QSet<QString> favoritesAmong(const QList<Document> &found);

private:
    /// What to call, for the log, and the call itself.
    template <typename Call> auto ask(const char *what, Call call);
    bool renewSession(const QString &refusedToken);
    bool isHanging();
    void noteOutcome(const QBError &error, std::chrono::steady_clock::time_point began);

    QBGlobeInformation &session;
    HttpTransport transport;
    QBNetworking networking;
    StopSignal stop;
    DocumentTransfer transfer;
    std::mutex renewal; ///< guards what follows; one renewal at a time
    QString hopelessToken;
    std::chrono::steady_clock::time_point hopelessSince;
    std::mutex health; ///< guards what follows
    std::chrono::steady_clock::time_point lastAnswer;
    std::chrono::steady_clock::time_point hangingUntil;
};

} // namespace volume
