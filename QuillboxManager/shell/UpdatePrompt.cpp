#include "shell/UpdatePrompt.h"

#include "login/JsonValues.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"

#include <QList>

#include <utility>

namespace shell
{

namespace
{
QString text(const QString &key)
{
    return platform::localizedString(key, ShellStrings::updateTable());
}
} // namespace

UpdateAnswer updateAnswer(const ServerReply &reply)
{
    const QJsonValue result = reply ? reply->value(ShellStrings::resultKey()) : QJsonValue();
    if (result.isUndefined() || result.isNull() || result.toString() == ShellStrings::resultOk())
        return UpdateAnswer::None;
    return result.toString() == ShellStrings::resultForced() ? UpdateAnswer::Forced : UpdateAnswer::Optional;
}

QUrl downloadPage(const ServerReply &reply)
{
    const QUrl url(reply ? JsonValues::text(*reply, ShellStrings::downloadUrlKey()) : QString(), QUrl::StrictMode);
    const bool web = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return web && !url.host().isEmpty() ? url : QUrl();
}

UpdatePrompt::UpdatePrompt(AlertPresenter presenter) : present(std::move(presenter)) {}

void UpdatePrompt::show(const ServerReply &reply, const QString &currentVersion,
                        std::function<void(UpdateChoice)> then) const
{
    const QString latest = reply ? JsonValues::text(*reply, ShellStrings::latestKey()) : QString();
    QBAlert::Alert alert = QBAlert::make(
        QMessageBox::Information, platform::fillPlaceholders(text(ShellStrings::newVersionText()), {latest}),
        platform::fillPlaceholders(text(ShellStrings::currentVersionText()), {currentVersion}));
    QList<UpdateChoice> choices;
    if (!downloadPage(reply).isEmpty()) {
        QBAlert::addButton(*alert, text(ShellStrings::updateNowTitle()));
        choices.append(UpdateChoice::Update);
    }
    const bool forced = updateAnswer(reply) == UpdateAnswer::Forced;
    QBAlert::addButton(*alert, forced
                                   ? platform::localizedString(QStringLiteral("Exit.title"), ShellStrings::menuTable())
                                   : text(ShellStrings::updateLaterTitle()));
    choices.append(forced ? UpdateChoice::Quit : UpdateChoice::Later);
    present(std::move(alert), [choices, then = std::move(then)](int code) {
        const qsizetype chosen = code - QBAlert::FirstButtonReturn;
        then(chosen >= 0 && chosen < choices.size() ? choices[chosen] : choices.last());
    });
}

} // namespace shell
