#pragma once

#include <functional>

class QWidget;

/// The two things a window asks of the application as a whole. Main thread.
namespace Application
{

/// Brings the application to the front, with `window` (may be null) as its active window.
void activate(QWidget *window = nullptr);

/// The user or a window wants the application to end. The shell's handler may ask first and may refuse; without a
/// handler the event loop ends.
void terminate();
void setTerminateHandler(std::function<void()> handler);

} // namespace Application
