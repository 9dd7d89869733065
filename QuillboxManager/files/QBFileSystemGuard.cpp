#include "files/QBFileSystemGuard.h"

#include "files/PathUtils.h"
#include "platform/Bundle.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

using namespace Qt::StringLiterals;

namespace
{

/// Evaluates all of them, also after a match.
bool anyMatches(const QList<QBFileSystemPredicate> &predicates, const QString &name)
{
    const quint64 letters = QBFileSystemPredicate::lettersOf(name);
    bool matched = false;
    for (const QBFileSystemPredicate &predicate : predicates)
        matched |= predicate.matches(name, letters);
    return matched;
}

} // namespace

const QBFileSystemGuard *QBFileSystemGuard::defaultGuard()
{
    static const std::unique_ptr<QBFileSystemGuard> guard =
        initWithPath(platform::Bundle::main().pathForResource(u"QBFileSystemGuard"_s, u"plist"_s));
    return guard.get();
}

std::unique_ptr<QBFileSystemGuard> QBFileSystemGuard::initWithPath(const QString &path)
{
    if (!PathUtils::existFile(path))
        return nullptr;
    auto guard = std::make_unique<QBFileSystemGuard>();
    guard->rulesFile = path;
    guard->perser();
    return guard;
}

void QBFileSystemGuard::perser()
{
    if (rulesFile.isEmpty())
        platform::log(u"ERROR: QBFileSystemGuard.plist not exist!!"_s);
    const QVariantMap root = platform::PropertyList::readDictionary(rulesFile).value_or(QVariantMap());
    arrNoSyncPredicates = predicatesWithArray(root.value(u"noSync"_s).toList());
    arrForbiddenPredicates = predicatesWithArray(root.value(u"forbidden"_s).toList());
}

QBFileSystemGuard::NameType QBFileSystemGuard::analyseNameType(const QString &name) const
{
    if (anyMatches(arrForbiddenPredicates, name))
        return Forbidden;
    return anyMatches(arrNoSyncPredicates, name) ? NoSync : Ordinary;
}

QList<QBFileSystemPredicate> QBFileSystemGuard::predicatesWithArray(const QVariantList &rules)
{
    QList<QBFileSystemPredicate> predicates;
    for (const QVariant &rule : rules)
        if (const auto predicate = predicateWithDic(rule.toMap()))
            predicates.append(*predicate);
    return predicates;
}

std::optional<QBFileSystemPredicate> QBFileSystemGuard::predicateWithDic(const QVariantMap &rule)
{
    const QVariant label = rule.value(u"label"_s);
    if (label.typeId() != QMetaType::QString || label.toString().isEmpty())
        return {};
    return QBFileSystemPredicate::predicateWithLabel(label.toString(), rule.value(u"type"_s).toLongLong());
}
