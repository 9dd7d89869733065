#pragma once

#include "api/ByteSink.h"
#include "api/ByteSource.h"
#include "api/QBNetworking.h"
#include "api/StopSignal.h"

#include <QString>

#include <optional>

/// What a ranged read brought.
struct DocumentRange {
    qint64 bytes = 0;      ///< given to the caller; fewer than asked for only at the end of the document
    QString rev;           ///< revision they belong to, null when the server does not say
    qint64 totalSize = -1; ///< of that revision, -1 when the server does not say
};

/// Moves the contents of documents without ever holding them: memory does not grow with their size. Blocks the caller;
/// any thread, any number of transfers at a time. There is no total time-out: a transfer ends with TimedOut when next
/// to nothing moved for as long as any other call may take (ClientServices::callTimeout).
///
/// Errors are the server's (domain "com.velto"), the transport's, and TransportError::BodyUnreadable or CannotWrite
/// when source or sink fail. `error` may be null and is written only when there is an error, and then the result is
/// empty: after a failed upload the server has the old contents, after a failed download the sink has a part.
///
/// An upload whose kept-alive connection dies without a byte of answer is sent once more by itself.
class DocumentTransfer
{
public:
    /// Conflict rules of the server for a name that is taken.
    enum OnDuplicate { Refuse = 1, TakeFreeName = 2, Overwrite = 3 };

    /// Both outlive the object. `stop` ends every transfer of this object with TransportError::Cancelled.
    explicit DocumentTransfer(QBNetworking &networking = QBNetworking::sharedNetworking(), StopSignal *stop = nullptr)
        : client(networking), stopSignal(stop)
    {
    }

    /// A new revision of the document; the reply is its record. `clientTime`: microseconds since 1970.
    ServerReply uploadFile(const QString &docid, ByteSource &contents, QBError *error,
                           std::optional<qint64> clientTime = {});
    /// A new document in the folder; the reply is its record, whose name may differ with TakeFreeName.
    ServerReply createFile(const QString &parentDocid, const QString &name, ByteSource &contents, QBError *error,
                           int ondup = Overwrite, std::optional<qint64> clientTime = {});

    /// Reads `length` bytes from `offset` straight into `into`, which has room for them. Past the end: 0 bytes.
    /// `rev`: that revision, the current one when null.
    std::optional<DocumentRange> readRange(const QString &docid, qint64 offset, qint64 length, char *into,
                                           QBError *error, const QString &rev = {});
    /// The same into a sink, as the bytes arrive.
    std::optional<DocumentRange> readRange(const QString &docid, qint64 offset, qint64 length, ByteSink &into,
                                           QBError *error, const QString &rev = {});

    /// The whole document into the sink; the reply is its record.
    ServerReply downloadFile(const QString &docid, ByteSink &sink, QBError *error, const QString &rev = {});

private:
    HttpRequest requestFor(const QString &method) const;
    ServerReply upload(QJsonObject parameters, ByteSource &contents, std::optional<qint64> clientTime, QBError *error);

    QBNetworking &client;
    StopSignal *const stopSignal;
};
