#include "update/AppUpdateFlag.h"

#include "platform/Bundle.h"
#include "platform/PropertyList.h"

void setShownUpdateWindow(const platform::Bundle &bundle, bool shown)
{
    const QString path = bundle.pathForResource(QStringLiteral("AppUpdate"), QStringLiteral("plist"));
    if (path.isNull())
        return;
    std::optional<QVariantMap> state = platform::PropertyList::readDictionary(path);
    if (!state)
        return;
    state->insert(QStringLiteral("ShownUpdateWindow"), shown);
    platform::PropertyList::write(path, *state, true);
}
