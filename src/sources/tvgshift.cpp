#include "tvgshift.h"

#include <QString>
#include <cmath>

namespace TvgShift {

std::optional<qint32> parseSeconds(QStringView text)
{
    bool ok = false;
    const double hours = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(hours) || hours < -12 || hours > 14)
        return std::nullopt;
    return qint32(std::lround(hours * 3600));
}

} // namespace TvgShift
