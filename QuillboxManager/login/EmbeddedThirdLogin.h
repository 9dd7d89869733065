#pragma once

#include "login/ThirdLoginOpener.h"
#include "ui/QBWindowController.h"

#include <functional>
#include <memory>

class ThirdLoginWindowController;

/// Single sign-on in a window of the application. The window is made for the first attempt and serves all later ones.
/// Main thread.
class EmbeddedThirdLogin final : public ThirdLoginOpener
{
public:
    using Maker = std::function<std::unique_ptr<ThirdLoginWindowController>()>;

    /// A null maker: the application's own window.
    explicit EmbeddedThirdLogin(Maker maker = {});
    ~EmbeddedThirdLogin() override;

    bool open(const QString &authURL, const QString &authID) override;
    /// Null before the first attempt.
    QBWindowController *window() const;

private:
    const Maker maker;
    std::unique_ptr<ThirdLoginWindowController> thirdLoginWC;
};
