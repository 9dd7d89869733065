#include "update/QBDownloadFileInformationManager.h"

#include "files/PathUtils.h"
#include "files/QBPathIndicator.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

namespace
{

bool isList(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantList;
}

/// Nothing for a file that holds no list; what is no record in it is left out.
std::optional<QVariantList> readRecords(const QString &path)
{
    const std::optional<QVariant> root = platform::PropertyList::read(path);
    if (!root || !isList(*root))
        return std::nullopt;
    QVariantList records = root->toList();
    records.removeIf([](const QVariant &record) { return !isList(record); });
    return records;
}

} // namespace

const std::shared_ptr<QBDownloadFileInformationManager> &QBDownloadFileInformationManager::defaultManager()
{
    static const auto manager =
        std::make_shared<QBDownloadFileInformationManager>(QBPathIndicator::pathForDownloadFileInformation());
    return manager;
}

QBDownloadFileInformationManager::QBDownloadFileInformationManager(const QString &path) : filePath(path)
{
    setup();
}

void QBDownloadFileInformationManager::setup()
{
    records.clear();
    if (!PathUtils::existFile(filePath)) {
        save();
        return;
    }
    const std::optional<QVariantList> stored = readRecords(filePath);
    if (!stored)
        platform::log(QStringLiteral("ERROR: %1 holds no download records").arg(filePath));
    records = stored.value_or(QVariantList());
}

void QBDownloadFileInformationManager::addFiles(const QVariantList &files)
{
    records.append(QVariant(files));
    save();
}

bool QBDownloadFileInformationManager::save() const
{
    return platform::PropertyList::write(filePath, records);
}

void QBDownloadFileInformationManager::cleanAll()
{
    const std::optional<QVariantList> stored = readRecords(filePath);
    if (!stored)
        return;
    records = *stored;
    save();
}

quint64 QBDownloadFileInformationManager::indexOf(const QVariantList &files) const
{
    const qsizetype index = records.indexOf(QVariant(files));
    return index < 0 ? NotFound : static_cast<quint64>(index);
}

std::optional<QBDownloadFileInformation> QBDownloadFileInformationManager::infoWithIndex(quint64 index) const
{
    if (index >= static_cast<quint64>(records.size()))
        return std::nullopt;
    return QBDownloadFileInformation(records.at(static_cast<qsizetype>(index)).toList());
}

std::optional<QBDownloadFileInformation> QBDownloadFileInformationManager::latestInformation() const
{
    return records.isEmpty() ? std::nullopt : infoWithIndex(static_cast<quint64>(records.size() - 1));
}

qsizetype QBDownloadFileInformationManager::count() const
{
    return readRecords(filePath).value_or(QVariantList()).size();
}
