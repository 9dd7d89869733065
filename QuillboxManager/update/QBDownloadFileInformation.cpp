#include "update/QBDownloadFileInformation.h"

#include "update/QBDownloadFileInformationManager.h"

quint64 QBDownloadFileInformation::index() const
{
    const auto known = manager.lock();
    return known ? known->indexOf(*this) : 0;
}

std::optional<QBDownloadFileInformation> QBDownloadFileInformation::last() const
{
    const auto known = manager.lock();
    const quint64 here = index();
    return known && here != 0 ? known->infoWithIndex(here - 1) : std::nullopt;
}

std::optional<QBDownloadFileInformation> QBDownloadFileInformation::next() const
{
    const auto known = manager.lock();
    const quint64 here = index();
    return known && here != 0 ? known->infoWithIndex(here + 1) : std::nullopt;
}
