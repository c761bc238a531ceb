#include "mpvframetime.h"

std::chrono::nanoseconds MpvFrameTime::toDuration(int64_t renderTime,
                                                  unsigned long clientApiVersion)
{
    if (clientApiVersion >= firstNanosecondVersion)
        return std::chrono::nanoseconds(renderTime);
    return std::chrono::microseconds(renderTime);
}
