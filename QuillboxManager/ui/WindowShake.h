#pragma once

#include <QWidget>

/// The sideways shake of a window that refuses something. Main thread.
namespace WindowShake
{

constexpr double Duration = 0.3; ///< seconds
constexpr double Reach = 0.06;   ///< part of the window's width

/// Moves the window's origin left and right by 0.06 of its width, twice, in 0.3 s, and ends where it began. Where the
/// host does not let a window move itself, its content shakes instead. A shake during a shake starts anew from the
/// first one's start; a hidden window is not shaken, and none is where the user wants no motion.
void shake(QWidget *window);
bool isShaking(const QWidget *window);

/// The closed path: distance from the start at `progress` 0…1 of the whole.
double offset(double progress, int width);

} // namespace WindowShake
