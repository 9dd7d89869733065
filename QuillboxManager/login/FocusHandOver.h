#pragma once

class QWidget;

namespace FocusHandOver
{

/// Disables a control; the focus it may have goes to `next`. (The toolkit would take the next in the tab order, and a
/// second press of Return would do whatever that one does.) Main thread.
void disable(QWidget *control, QWidget *next);

} // namespace FocusHandOver
