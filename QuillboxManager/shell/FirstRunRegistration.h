#pragma once

#include "files/Branding.h"
#include "platform/Bundle.h"

namespace platform
{
class Scripts;
}

namespace shell
{

/// Registers the file manager's extension once per installation; the branding file remembers that it happened. A
/// branding file that cannot be written repeats it at every start, which is harmless.
class FirstRunRegistration
{
public:
    FirstRunRegistration(const platform::Scripts &scripts, const platform::Bundle &bundle,
                         const Branding &branding = Branding());

    /// Waits for the registration tool: background pool only. True when the tool was run.
    bool registerOnce() const;

private:
    const platform::Scripts &scripts;
    const platform::Bundle bundle;
    const Branding branding;
};

} // namespace shell
