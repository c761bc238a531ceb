#pragma once
// XMLTV's times and the playlist's tvg-shift, read exactly: "20241125183000 +0100" and friends.
#include <QByteArrayView>
#include <QStringView>
#include <optional>

namespace XmltvTime {

// Seconds since the epoch (UTC) of an XMLTV time: YYYYMMDDhhmm, then optionally ss, then
// optionally a zone +HHMM or -HHMM after any spaces; without a zone the time is UTC. Nothing
// when the text is anything else or names no real moment (a 31 February, a 25th hour).
std::optional<qint64> parse(QByteArrayView text);

// The hours of a tvg-shift ("2", "-1.5", "+0.25"), from -12 to +14; nothing otherwise.
std::optional<double> parseShift(QStringView text);

// A shift in hours as whole seconds.
qint64 shiftSeconds(double hours);

} // namespace XmltvTime
