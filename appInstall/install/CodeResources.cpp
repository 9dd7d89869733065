#include "install/CodeResources.h"

#include "install/BundleCopy.h"
#include "platform/PropertyList.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{

/// Null when the file cannot be read to its end.
QByteArray digestOf(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file) || file.error() != QFileDevice::NoError)
        return {};
    return hash.result();
}

bool agrees(const QFileInfo &entry, const QVariant &listed)
{
    if (entry.isSymLink())
        return listed.typeId() == QMetaType::QString && linkTarget(entry.filePath()) == listed.toString();
    return listed.typeId() == QMetaType::QByteArray && entry.isFile() && digestOf(entry.filePath()) == listed;
}

} // namespace

QString codeResourcesFile(const QString &bundle)
{
    return bundle + "/Contents/_CodeSignature/CodeResources"_L1;
}

QString problemWithCodeResources(const QString &bundle)
{
    const QString list = codeResourcesFile(bundle);
    QVariantMap expected =
        platform::PropertyList::readDictionary(list).value_or(QVariantMap()).value(u"files"_s).toMap();
    if (expected.isEmpty())
        return u"its list of code resources cannot be read"_s;
    const QString contents = bundle + "/Contents/"_L1;
    QDirIterator entries(contents, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo entry(entries.next());
        if ((entry.isDir() && !entry.isSymLink()) || entry.filePath() == list)
            continue;
        const QString name = entry.filePath().mid(contents.size());
        const QVariant listed = expected.take(name);
        if (!listed.isValid())
            return u"the file %1 is not listed"_s.arg(name);
        if (!agrees(entry, listed))
            return u"the file %1 is damaged"_s.arg(name);
    }
    return expected.isEmpty() ? QString() : u"the file %1 is missing"_s.arg(expected.firstKey());
}

} // namespace install
