#pragma once
// The one clock pictures and sound are stamped with, so that they line up in the file.
#include <chrono>

namespace CaptureClock {

// Seconds on a steady clock.
inline double now()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

} // namespace CaptureClock
