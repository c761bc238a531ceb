#pragma once
// The tvg-shift of a playlist or an entry: hours, fractions allowed, from -12 to +14, by which
// the guide's times are moved (positive is later).
#include <QStringView>
#include <QtGlobal>
#include <optional>

namespace TvgShift {

// The shift in whole seconds ("2", "-1.5", "+0.25"); nothing outside -12…+14 hours or for any
// other text.
std::optional<qint32> parseSeconds(QStringView text);

} // namespace TvgShift
