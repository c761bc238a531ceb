#pragma once
// The rules by which a live channel that broke off is brought back: how long it may stand
// still, how many tries it gets, how long each waits and what the user is told.
#include <QString>

namespace LiveRecovery {

// A live item the user wants to play that makes no progress this long has broken off.
inline constexpr int stallMs = 8000;
inline constexpr int attempts = 5;

// The wait before try `attempt` (1 to attempts): 1, 2, 4, 8 and 16 s.
int delayMs(int attempt);

// The notice of a try: "Reconnecting… (2/5)".
QString notice(int attempt);

} // namespace LiveRecovery
