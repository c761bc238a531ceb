#pragma once
// Programme guides made to hurt whoever reads them, as a hostile server would send them: entity
// bombs, floods of channels, endless titles. Each keeps a channel "a" with a programme titled
// "Before" ahead of the harm and one titled "After" behind it, to show the rest is still read.
#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <functional>

namespace HostileGuides {

// The start and stop of the programmes: 25 November 2026, 18:00 to 20:00 UTC.
constexpr qint64 firstStart = 1795629600;

// Entities nested levels deep, each ten of the one below: 10^levels copies of "lol" once
// expanded, from under a kilobyte.
QByteArray nestedEntities(int levels);
// One entity of entityBytes referenced references times: a quadratic blow-up.
QByteArray repeatedEntity(qsizetype entityBytes, int references);

// The guide's bytes in pieces, written one after another; false stops the writing.
using Sink = std::function<bool(QByteArrayView)>;
// count <channel> elements, all with the same id when identical, else numbered.
void manyChannels(qint64 count, bool identical, const Sink &sink);
// A programme whose title is bytes long.
void longTitle(qint64 bytes, const Sink &sink);

// bytes packed with gzip.
QByteArray gzip(QByteArrayView bytes);
// What write produces, packed with gzip into path; false when it cannot be written.
bool writeGzip(const QString &path, const std::function<void(const Sink &)> &write);

} // namespace HostileGuides
