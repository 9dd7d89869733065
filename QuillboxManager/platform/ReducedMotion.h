#pragma once

namespace platform
{

/// Does the desktop ask for as little motion as can be? The desktop is asked at the first call, without waiting: until
/// it has answered, and where it does not tell, false. Follows later changes. Main thread.
bool reducedMotionWanted();

} // namespace platform
