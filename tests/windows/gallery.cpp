// Takes a picture of every window, for the documentation and for judging looks by eye.
// usage: window_gallery LANGUAGE OUTPUT_FOLDER [WINDOW...]

#include "EveryWindow.h"
#include "login/WebPanel.h"
#include "platform/Bundle.h"
#include "platform/Localization.h"
#include "ui/StyleKit.h"
#include "ui/animation/DisplayRefresh.h"

#include <QDir>
#include <QPainter>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{
/// A fine line in place of the frame that the desktop gives a window.
QImage framed(const QPixmap &picture)
{
    QImage image = picture.toImage().convertToFormat(QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setPen(QColor(0xC8, 0xC8, 0xC8));
    const QSizeF size = picture.deviceIndependentSize();
    painter.drawRect(QRectF(0, 0, size.width() - 1, size.height() - 1));
    return image;
}

bool takePicture(const testing::KnownWindow &known, const QString &folder)
{
    ServedScene scene(known.scenario);
    const testing::KnownWindow::Controller controller = known.open(scene);
    QWidget *window = controller->window();
    const auto settled = [&] { return controller->isVisible() && (!known.settle || known.settle(scene, *window)); };
    if (!QTest::qWaitFor(settled, 10'000)) {
        std::fprintf(stderr, "%s does not come up\n", known.name);
        return false;
    }
    const auto still = [] { return !DisplayRefresh::shared().isTicking(); };
    QTest::qWait(window->findChild<WebPanel *>() ? 1500 : 300);
    if (!QTest::qWaitFor(still, 10'000))
        return false;
    QMessageBox *alert = LoginScene::alert();
    QWidget *shown = alert ? static_cast<QWidget *>(alert) : window;
    if (!framed(shown->grab()).save(folder + u'/' + QLatin1String(known.name) + u".png"_s))
        return false;
    if (alert)
        alert->close();
    return true;
}
} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_XCB_GL_INTEGRATION", "none"); // as the application does, for the browser's sake
    QApplication application(argc, argv);
    testing::useRealBrowser();
    QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fputs("usage: window_gallery LANGUAGE OUTPUT_FOLDER [WINDOW...]\n", stderr);
        return 2;
    }
    const QString language = arguments.at(1);
    const QString folder = arguments.at(2);
    QDir().mkpath(folder);
    platform::loadLocalization(platform::Bundle::main().resourcePath() + u"/translations"_s, {language});
    StyleKit::install();
    const QStringList wanted = arguments.mid(3);
    bool complete = true;
    for (const testing::KnownWindow &known : testing::everyWindow())
        if (wanted.isEmpty() || wanted.contains(QLatin1String(known.name)))
            complete = takePicture(known, folder) && complete;
    return complete ? 0 : 1;
}
