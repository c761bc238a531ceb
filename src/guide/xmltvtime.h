#pragma once
// XMLTV's times, read exactly: "20241125183000 +0100" and friends.
#include <QByteArrayView>
#include <QStringView>
#include <optional>

namespace XmltvTime {

// Seconds since the epoch (UTC) of an XMLTV time: YYYYMMDDhhmm, then optionally ss, then
// optionally a zone +HHMM or -HHMM after any spaces; without a zone the time is UTC. Nothing
// when the text is anything else or names no real moment (a 31 February, a 25th hour).
std::optional<qint64> parse(QByteArrayView text);

} // namespace XmltvTime
