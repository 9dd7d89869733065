#pragma once

#include "update/QBDownloadFileInformation.h"

#include <QString>

#include <limits>

/// The list of download records and its file, a property list. Each record is itself a list. One thread at a time;
/// touches the disk.
class QBDownloadFileInformationManager
{
public:
    static constexpr quint64 NotFound = std::numeric_limits<qint64>::max();

    /// The list in the client's data folder, made on first use.
    static const std::shared_ptr<QBDownloadFileInformationManager> &defaultManager();

    /// Sets up.
    explicit QBDownloadFileInformationManager(const QString &path);

    QString path() const { return filePath; }
    const QVariantList &infos() const { return records; }

    /// Reads the file; a missing one is made empty. A damaged one counts as empty and stays until the next save.
    void setup();
    /// Appends a record and saves.
    void addFiles(const QVariantList &files);
    bool save() const;
    /// Drops what is not saved; removes nothing. A damaged file changes nothing.
    void cleanAll();

    /// Of the record in memory that equals the list, NotFound without one.
    quint64 indexOf(const QVariantList &files) const;
    /// A view is no record: always NotFound.
    quint64 indexOf(const QBDownloadFileInformation &) const { return NotFound; }
    /// Nothing past the end.
    std::optional<QBDownloadFileInformation> infoWithIndex(quint64 index) const;
    /// Nothing when there are no records.
    std::optional<QBDownloadFileInformation> latestInformation() const;
    /// Of the file, which is read anew.
    qsizetype count() const;

private:
    const QString filePath;
    QVariantList records;
};
