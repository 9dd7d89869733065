#include "platform/Localization.h"

#include "platform/HostProcess.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QMutex>
#include <QTranslator>

#include <memory>

namespace platform
{

namespace
{

QMutex mutex;

/// The tables in use; replaced as a whole, so that a reader keeps the ones it began with.
std::shared_ptr<const QTranslator> &currentTables()
{
    static std::shared_ptr<const QTranslator> tables;
    return tables;
}

std::shared_ptr<const QTranslator> tablesInUse()
{
    QMutexLocker lock(&mutex);
    return currentTables();
}

/// Null when there is no entry.
QString lookUp(const QString &key, const QString &table)
{
    const auto tables = tablesInUse();
    return tables ? tables->translate(table.toUtf8().constData(), key.toUtf8().constData()) : QString();
}

/// Which of our tables suits the language; null when none does.
QString tableFor(const QString &language)
{
    const QStringList parts = language.split(u'-');
    if (parts.first() == QLatin1String("en"))
        return QStringLiteral("en");
    if (parts.first() != QLatin1String("zh"))
        return {};
    if (parts.contains(QLatin1String("Hans")))
        return QStringLiteral("zh-Hans");
    for (const char *mark : {"Hant", "TW", "HK", "MO"})
        if (parts.contains(QLatin1String(mark)))
            return QStringLiteral("zh-Hant");
    return QStringLiteral("zh-Hans");
}

/// What the toolkit itself says, in the menus of fields and in its file dialog; it is written in English.
void loadTextsOfToolkit(const QString &language)
{
    static std::unique_ptr<QTranslator> texts;
    texts.reset();
    const QString name = language == QLatin1String("zh-Hans")   ? QStringLiteral("qtbase_zh_CN")
                         : language == QLatin1String("zh-Hant") ? QStringLiteral("qtbase_zh_TW")
                                                                : QString();
    if (name.isNull() || !QCoreApplication::instance())
        return;
    texts = std::make_unique<QTranslator>();
    if (texts->load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts.get());
}

} // namespace

QString localizedString(const QString &key, const QString &table)
{
    const QString text = lookUp(key, table);
    return text.isNull() ? key : text;
}

bool hasLocalizedString(const QString &key, const QString &table)
{
    return !lookUp(key, table).isNull();
}

QString fillPlaceholders(const QString &format, const QStringList &arguments)
{
    const QStringList pieces = format.split(QStringLiteral("%@"));
    QString text = pieces.first();
    for (qsizetype index = 1; index < pieces.size(); ++index)
        text += arguments.value(index - 1) + pieces[index];
    return text;
}

QStringList preferredLanguages()
{
    const QStringList languages = hostLanguages();
    return languages.isEmpty() ? QStringList{QStringLiteral("en-US")} : languages;
}

QString loadLocalization(const QString &translationsFolder, const QStringList &languages)
{
    const QString lastResort = QStringLiteral("en");
    QStringList candidates;
    for (const QString &language : languages)
        candidates.append(tableFor(language));
    candidates.append(lastResort);
    candidates.removeAll(QString());
    candidates.removeDuplicates();
    for (const QString &candidate : std::as_const(candidates)) {
        const auto tables = std::make_shared<QTranslator>();
        if (!tables->load(QStringLiteral("quillbox_") + candidate, translationsFolder, QStringLiteral("|"))) {
            log(QStringLiteral("No texts for %1 in %2").arg(candidate, translationsFolder));
            continue;
        }
        loadTextsOfToolkit(candidate);
        QMutexLocker lock(&mutex);
        currentTables() = tables;
        return candidate;
    }
    return lastResort;
}

} // namespace platform
