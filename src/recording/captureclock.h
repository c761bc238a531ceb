#pragma once
// The one clock pictures and sound are stamped with, so that they line up in the file.
#include <chrono>

namespace CaptureClock {

// A moment on the steady clock, in seconds.
inline double seconds(std::chrono::steady_clock::time_point moment)
{
    return std::chrono::duration<double>(moment.time_since_epoch()).count();
}

// Now, in seconds on the steady clock.
inline double now()
{
    return seconds(std::chrono::steady_clock::now());
}

} // namespace CaptureClock
