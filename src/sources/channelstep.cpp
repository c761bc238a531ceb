#include "channelstep.h"

namespace ChannelStep {

std::optional<int> target(std::optional<int> from, int step, int rowCount)
{
    if (rowCount <= 0 || step == 0)
        return std::nullopt;
    if (!from || *from < 0 || *from >= rowCount)
        return step > 0 ? 0 : rowCount - 1;
    // Whole turns of the list are dropped before wrapping, so any step lands inside it.
    return ((*from + step) % rowCount + rowCount) % rowCount;
}

} // namespace ChannelStep
