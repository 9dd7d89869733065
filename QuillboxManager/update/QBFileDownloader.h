#pragma once

#include "api/HttpTransport.h"

#include <QMap>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

/// What a downloader fills.
class QBDownloadFile
{
public:
    virtual ~QBDownloadFile() = default;
    /// Full path of the local file, which must exist. Asked for on the transfer's thread.
    virtual QString backupPath() const = 0;
};

/// Fetches one address into an existing file, from its beginning; a longer file keeps its old tail. Whatever status the
/// server answers with, its body is what is kept. Without a usable file the body is dropped and the download counts as
/// done. Main thread; the transfer runs in the background. One download at a time: a newer one ends an earlier one with
/// its error, destroying the downloader ends it in silence.
class QBFileDownloader : public QObject
{
    Q_OBJECT
public:
    /// "URL", "Method" (GET when missing), and header fields with their values.
    using Information = QMap<QString, QString>;
    /// No error: done. The error is always of the server's domain with code `FailureCode`.
    using CompleteHandle = std::function<void(const QBError &error)>;
    static constexpr qint64 FailureCode = 404444;

    static std::unique_ptr<QBFileDownloader> downloaderWithFile(const std::shared_ptr<const QBDownloadFile> &file);
    explicit QBFileDownloader(const std::shared_ptr<const QBDownloadFile> &file,
                              HttpTransport &transport = HttpTransport::shared(), QObject *parent = nullptr);
    ~QBFileDownloader() override;

    /// A description that is no proper request fails without anything being sent. `complete` is called once, later.
    void downloadWithInfomation(const Information &information, CompleteHandle complete);

private:
    class Connection;
    void finish(const std::shared_ptr<Connection> &connection, bool succeeded);
    void abandon();

    const std::shared_ptr<const QBDownloadFile> file;
    HttpTransport &transport;
    std::shared_ptr<Connection> urlConnection;
    CompleteHandle completeHandle;
};
