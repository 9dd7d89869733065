#include "shell/AppUpdateFlag.h"

#include "platform/PropertyList.h"
#include "shell/ShellStrings.h"

namespace shell
{

void setShownUpdateWindow(const QString &path, bool shown)
{
    if (path.isNull())
        return;
    std::optional<QVariantMap> state = platform::PropertyList::readDictionary(path);
    if (!state)
        return;
    state->insert(ShellStrings::shownUpdateWindow(), shown);
    platform::PropertyList::write(path, *state, true);
}

} // namespace shell
