#pragma once

#include "platform/WebBrowser.h"

/// The plug-in's root object.
class WebPlugin final : public QObject, public platform::WebBrowserPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QUILLBOX_WEB_BROWSER_INTERFACE)
    Q_INTERFACES(platform::WebBrowserPlugin)
public:
    std::unique_ptr<platform::WebBrowser> make(QString *error) override;
};
