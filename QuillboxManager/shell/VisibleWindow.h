#pragma once

#include "ui/QBWindowController.h"

#include <initializer_list>

namespace shell
{

/// The first of them that is on the screen, else null. Null entries stand for windows that were not made.
inline QBWindowController *firstVisible(std::initializer_list<QBWindowController *> controllers)
{
    for (QBWindowController *controller : controllers)
        if (controller && controller->isVisible())
            return controller;
    return nullptr;
}

} // namespace shell
