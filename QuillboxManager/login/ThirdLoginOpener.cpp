#include "login/ThirdLoginOpener.h"

#include "platform/Localization.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"

#include <QUrl>

namespace
{
class NoBrowser final : public ThirdLoginOpener
{
public:
    bool open(const QString &, const QString &) override
    {
        using platform::localizedString;
        QBAlert::Alert alert =
            QBAlert::make(QMessageBox::Information, localizedString(QStringLiteral("ThirdLogin.unavailable"),
                                                                    QStringLiteral("LoginWindowController")));
        QBAlert::addButton(*alert, localizedString(QStringLiteral("确定")));
        Application::activate();
        QBAlert::beginSheet(std::move(alert), nullptr, [](int) {});
        return false;
    }
};
} // namespace

ThirdLoginOpener &ThirdLoginOpener::withoutBrowser()
{
    static NoBrowser opener;
    return opener;
}

QString thirdLoginURL(const QString &authServer)
{
    QUrl url(authServer.trimmed());
    const QString scheme = url.scheme();
    if (!url.isValid() || url.host().isEmpty() || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
        return {};
    const QString platformItem = QStringLiteral("platform=mac");
    const QString query = url.query(QUrl::FullyEncoded);
    url.setQuery(query.isEmpty() ? platformItem : query + QLatin1Char('&') + platformItem);
    return QString::fromLatin1(url.toEncoded());
}
