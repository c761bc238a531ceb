#include "timetext.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TimeText {

QString time(double seconds)
{
    if (!std::isfinite(seconds))
        return QStringLiteral("00:00");
    // Clamped to what an int holds, so that absurd durations cannot overflow the conversion.
    constexpr double limit = std::numeric_limits<int>::max();
    const int t = int(std::clamp(std::trunc(seconds), -limit, limit));
    return QString::asprintf("%02d:%02d", t / 60, t % 60);
}

QString remaining(double duration, double currentTime)
{
    return minusSign + time(std::max(duration - currentTime, 0.0));
}

} // namespace TimeText
