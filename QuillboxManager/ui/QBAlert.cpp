#include "ui/QBAlert.h"

#include "platform/Host.h"
#include "platform/Localization.h"
#include "ui/AlertBox.h"
#include "ui/Application.h"
#include "ui/ConflictLocation.h"
#include "ui/QBAlertViewController.h"
#include "ui/QBCheckBox.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QUrl>

#include <utility>

namespace QBAlert
{

namespace
{
constexpr qint64 TranslatedErrorCode = 9999;

QString suppressionTitle()
{
    return platform::localizedString(QStringLiteral("跳过之后所有相同的冲突提示"),
                                     QStringLiteral("QBAlertClearCacheRemind"));
}

QString errorTable()
{
    return QStringLiteral("QBError");
}

/// What every alert of the factory has: one confirming button and, where wanted, the check box.
void dress(AlertBox &alert, bool showsSuppression)
{
    alert.appendButton(platform::localizedString(QStringLiteral("确定")));
    if (!showsSuppression)
        return;
    auto *box = new QBCheckBox(&alert);
    box->setObjectName(QStringLiteral("suppressionButton"));
    box->setText(suppressionTitle());
    box->setAccessibleName(box->text());
    alert.setCheckBox(box);
}

/// The platform's alert for an error: headline and detail.
std::unique_ptr<AlertBox> alertWithError(const QBError &error)
{
    return std::make_unique<AlertBox>(QMessageBox::Warning,
                                      platform::localizedString(error.localizedDescription(), errorTable()),
                                      error.localizedRecoverySuggestion());
}

void openWebLink(const QString &address)
{
    // The address comes from a server: only what a browser shows may be opened.
    const QUrl url(address, QUrl::StrictMode);
    if (url.isValid() && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")))
        QDesktopServices::openUrl(url);
    else
        qWarning("refused to open a link that is no web address");
}

QLabel *linkView(const QString &title, const QString &address)
{
    auto *link = new QLabel;
    link->setObjectName(QStringLiteral("authenticateLink"));
    link->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize));
    link->setTextFormat(Qt::RichText);
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    link->setText(QStringLiteral("<a href=\"%1\">%2</a>").arg(address.toHtmlEscaped(), title.toHtmlEscaped()));
    QObject::connect(link, &QLabel::linkActivated, link, openWebLink);
    return link;
}
} // namespace

Alert defaultQBAlertWithShowsSuppressionButton(bool shows, const QBError &error)
{
    auto alert = alertWithError(error);
    dress(*alert, shows);
    return alert;
}

Alert defaultQBAlert(const QString &messageKey, const QString &informativeKey)
{
    auto alert = std::make_unique<AlertBox>(QMessageBox::Information, platform::localizedString(messageKey),
                                            platform::localizedString(informativeKey));
    dress(*alert, false);
    return alert;
}

Alert defaultQBAlertWithShowsSuppressionButton(bool shows, const QBError &error, const QBError &errorCode)
{
    const QString description = platform::localizedString(error.localizedDescription(), errorTable());
    auto alert = alertWithError(QBError::withText(QBError::posixDomain(), TranslatedErrorCode, description));
    dress(*alert, false);

    auto *panel = new QBAlertViewController;
    const QString suggestion = error.localizedRecoverySuggestion();
    panel->setInformationText(suggestion.isEmpty() ? QString() : platform::localizedString(suggestion));
    panel->setErrorCodeTitle(platform::fillPlaceholders(platform::localizedString(QStringLiteral("(错误码：%@)")),
                                                        {platform::localizedString(errorCode.localizedDescription())}));
    panel->setCheckBoxTitle(shows ? suppressionTitle() : QString());
    alert->setAccessoryView(panel);
    return alert;
}

Alert authenticateAlertWithURL(const QString &address, bool shows, const QBError &error)
{
    auto alert = alertWithError(error);
    dress(*alert, shows);
    alert->setAccessoryView(linkView(platform::localizedString(QStringLiteral("立即认证"), errorTable()), address));
    return alert;
}

Alert conflictAlertWithURL(const QString &path, bool)
{
    const QString format = platform::localizedString(QStringLiteral(
        "您编辑的文件版本和云端最新版本不一致,(在您\"关闭\"文件后)将自动将您保存的版本在原位置生成冲突文件\"%@\""));
    const QString location = conflictLocation(path, platform::host().folders.volumes());
    auto alert =
        std::make_unique<AlertBox>(QMessageBox::Warning, platform::fillPlaceholders(format, {path.section(u'/', -1)}),
                                   platform::localizedString(QStringLiteral("所在路径：")) + location);
    dress(*alert, true);
    return alert;
}

Alert make(QMessageBox::Icon icon, const QString &message, const QString &informative)
{
    return std::make_unique<AlertBox>(icon, message, informative);
}

QPushButton *addButton(QMessageBox &alert, const QString &title)
{
    return static_cast<AlertBox &>(alert).appendButton(title);
}

int runModal(QMessageBox &alert)
{
    Application::activate();
    alert.exec();
    return FirstButtonReturn + static_cast<const AlertBox &>(alert).answeredButton();
}

void beginSheet(Alert alert, QWidget *window, std::function<void(int code)> done)
{
    auto *sheet = static_cast<AlertBox *>(alert.release());
    sheet->setParent(window, sheet->windowFlags());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    QObject::connect(sheet, &QDialog::finished, sheet, [sheet, done = std::move(done)] {
        if (done)
            done(FirstButtonReturn + sheet->answeredButton());
    });
    sheet->open();
}

bool suppressionState(const QMessageBox &alert)
{
    if (const auto *panel = qobject_cast<QBAlertViewController *>(static_cast<const AlertBox &>(alert).accessoryView()))
        return panel->isCheckBoxTicked();
    return alert.checkBox() && alert.checkBox()->isChecked();
}

} // namespace QBAlert
