#include "liverecovery.h"

#include <algorithm>

namespace LiveRecovery {

int delayMs(int attempt)
{
    return 1000 << std::clamp(attempt - 1, 0, attempts - 1);
}

QString notice(int attempt)
{
    return QStringLiteral("Reconnecting… (%1/%2)").arg(attempt).arg(attempts);
}

} // namespace LiveRecovery
