#pragma once

#include <QVariantList>

#include <memory>
#include <optional>

class QBDownloadFileInformationManager;

/// A view of one download record. Views that the manager hands out do not know it, so that they have neither a previous
/// nor a next record. A value.
class QBDownloadFileInformation
{
public:
    static QBDownloadFileInformation informationWithArray(const QVariantList &array)
    {
        return QBDownloadFileInformation(array);
    }
    explicit QBDownloadFileInformation(const QVariantList &files) : array(files) {}

    QVariantList files() const { return array; }
    /// 0 without a manager.
    quint64 index() const;
    std::optional<QBDownloadFileInformation> last() const;
    std::optional<QBDownloadFileInformation> next() const;

    void setManager(const std::weak_ptr<const QBDownloadFileInformationManager> &owner) { manager = owner; }

private:
    QVariantList array;
    std::weak_ptr<const QBDownloadFileInformationManager> manager;
};
