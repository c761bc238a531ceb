#pragma once
// Zapping: the row of the channel list a "next" or "previous" press goes to.
#include <optional>

namespace ChannelStep {

// The row after (step +1) or before (step -1) the row `from` among rowCount shown rows,
// wrapping at the ends; without a row to start from (the playing channel is not shown), the
// first row for next and the last for previous. Nothing when no row is shown.
std::optional<int> target(std::optional<int> from, int step, int rowCount);

} // namespace ChannelStep
