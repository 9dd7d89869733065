#include "platform/Bundle.h"
#include "platform/WebBrowser.h"

#include <QPluginLoader>

namespace platform
{

namespace
{
void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}
} // namespace

std::unique_ptr<WebBrowser> makeWebBrowser(const QString &folder, QString *error)
{
    // A null folder would make the library be looked for in the working directory.
    if (folder.isEmpty()) {
        setError(error, QStringLiteral("no plug-in folder"));
        return nullptr;
    }
    // The loader's end does not unload the library.
    QPluginLoader loader(folder + QStringLiteral("/QuillboxWeb"));
    auto *plugin = qobject_cast<WebBrowserPlugin *>(loader.instance());
    if (!plugin) {
        setError(error, loader.isLoaded() ? QStringLiteral("not a browser plug-in") : loader.errorString());
        return nullptr;
    }
    return plugin->make(error);
}

std::unique_ptr<WebBrowser> makeWebBrowser(QString *error)
{
    return makeWebBrowser(Bundle::main().builtInPlugInsPath(), error);
}

} // namespace platform
