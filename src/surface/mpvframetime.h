#pragma once
// The unit of the times mpv's render API reports (the target time of the next frame), which
// changed with mpv's clock: microseconds up to client API 2.1 (mpv 0.36), nanoseconds from 2.2
// (mpv 0.37). Known from the version of the libmpv the program runs with.
#include <chrono>
#include <cstdint>

namespace MpvFrameTime {

// mpv_client_api_version() of mpv 0.37, the first whose render times are in nanoseconds.
inline constexpr unsigned long firstNanosecondVersion = (2UL << 16) | 2UL;

// A render-API time of a libmpv of the given client API version, as a duration.
std::chrono::nanoseconds toDuration(int64_t renderTime, unsigned long clientApiVersion);

} // namespace MpvFrameTime
