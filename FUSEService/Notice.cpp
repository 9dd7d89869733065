#include "Notice.h"

#include "platform/Log.h"

void Notice::show(const QString &name)
{
    hide();
    shown = platform::Task::launch(program, {name});
    if (!shown)
        platform::log(QStringLiteral("FUSEService: %1 cannot be started").arg(program));
}

void Notice::hide()
{
    if (shown && shown->isRunning())
        shown->terminate();
    shown.reset();
}
