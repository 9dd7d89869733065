#include "platform/Bundle.h"
#include "platform/Localization.h"
#include "ui/QBAlert.h"
#include "ui/StyleKit.h"
#include "ui/TestIdentifiers.h"

#include <QApplication>

#include <csignal>
#include <optional>

#include <sys/prctl.h>

// Shows one of the companion's messages and ends. usage: QuillboxNotice NAME

namespace
{

std::optional<QBError> messageNamed(const QString &name)
{
    constexpr qint64 NoticeCode = 1000;
    if (name == QLatin1String("no-server"))
        return QBError::errorForNetBreak();
    if (name == QLatin1String("link-not-found"))
        return QBError::withText(
            QBError::serverDomain(), NoticeCode,
            platform::localizedString(QStringLiteral("打开SharedLink失败"), QStringLiteral("QBError")),
            platform::localizedString(QStringLiteral("未找到链接指向的文档"), QStringLiteral("QBError")));
    return std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM); // a message of a service that is gone would only be in the way
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    const QApplication application(argc, argv);
    platform::loadLocalization(platform::Bundle::main().resourcePath() + QStringLiteral("/translations"));
    const std::optional<QBError> message = messageNamed(QCoreApplication::arguments().value(1));
    if (!message)
        return 64;
    QApplication::setApplicationName(QStringLiteral("Quillbox"));
    QApplication::setDesktopFileName(platform::Bundle::main().identifier());
    StyleKit::install();
    TestIdentifiers::installIfWanted();
    const QBAlert::Alert alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(false, *message);
    QBAlert::runModal(*alert);
    return 0;
}
