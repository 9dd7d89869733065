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

QBError message(const QString &headline, const QString &detail)
{
    constexpr qint64 NoticeCode = 1000;
    const QString table = QStringLiteral("QBError");
    return QBError::withText(QBError::serverDomain(), NoticeCode, platform::localizedString(headline, table),
                             platform::localizedString(detail, table));
}

std::optional<QBError> messageNamed(const QString &name)
{
    if (name == QLatin1String("no-server"))
        return QBError::errorForNetBreak();
    if (name == QLatin1String("link-not-found"))
        return message(QStringLiteral("打开SharedLink失败"), QStringLiteral("未找到链接指向的文档"));
    if (name == QLatin1String("no-upload-folder"))
        return message(QStringLiteral("无法直传文件"), QStringLiteral("没有可以上传的个人文件夹，请检查网络后重试"));
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
