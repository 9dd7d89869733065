#include "web/WebPlugin.h"

#include "web/EngineBrowser.h"
#include "web/EngineSetup.h"

std::unique_ptr<platform::WebBrowser> WebPlugin::make(QString *error)
{
    if (!EngineSetup::prepare(error))
        return nullptr;
    return std::make_unique<EngineBrowser>();
}
