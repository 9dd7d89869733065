#pragma once

#include "SignOnPages.h"

#include <memory>

namespace documentserver
{

/// Everything that a browser may open on this server. Any thread; must outlive its receivers.
class Pages
{
public:
    explicit Pages(Services &services) : signOn(services) {}

    static bool isPage(const QString &path);
    Reply answer(const PageRequest &request);
    /// Takes the body of a posted form.
    std::unique_ptr<BodyReceiver> receive(const RequestHead &head);

private:
    SignOnPages signOn;
};

} // namespace documentserver
