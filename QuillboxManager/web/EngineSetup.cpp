#include "web/EngineSetup.h"

#include <QOpenGLContext>
#include <QQuickWindow>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

// Exported by Qt for the engine, without a public header.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);

namespace EngineSetup
{

namespace
{
constexpr char FlagsVariable[] = "QTWEBENGINE_CHROMIUM_FLAGS";

bool isSuperuser()
{
    return geteuid() == 0;
}

/// The engine asks the shared context for its format even where nothing is painted with it. The application makes none
/// at its start, because a real one would load the desktop's graphics drivers; one that stays empty is enough.
void provideSharedContext()
{
    if (!QOpenGLContext::globalShareContext())
        qt_gl_set_global_share_context(new QOpenGLContext); // for the life of the process
}
} // namespace

QByteArray flags(const QByteArray &present, bool superuser)
{
    QByteArray all = present.isEmpty() ? QByteArray() : present + ' ';
    all += "--disable-gpu";
    // The engine refuses to run for the superuser with its sandbox, which needs an ordinary user's namespaces. Only
    // without a sandbox can it do without the helpers that would outlive the last page.
    if (superuser)
        all += " --no-sandbox --no-zygote";
    return all;
}

bool canSandbox()
{
    if (isSuperuser())
        return true;
    // Asked of the system itself: what allows or forbids namespaces differs from one to the next. The child does
    // nothing but try, so the wait is over in about a millisecond.
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0)
        _exit(unshare(CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET) == 0 ? 0 : 1);
    int status = 1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool prepare(QString *error)
{
    static bool prepared = false;
    if (prepared)
        return true;
    if (!canSandbox()) {
        if (error)
            *error = QStringLiteral("this system allows no user namespaces, which the sandbox of web pages needs");
        return false;
    }
    provideSharedContext();
    // Painted by the processor: the only way that also works on desktops without graphics drivers, and the leanest.
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    qputenv(FlagsVariable, flags(qgetenv(FlagsVariable), isSuperuser()));
    prepared = true;
    return true;
}

} // namespace EngineSetup
