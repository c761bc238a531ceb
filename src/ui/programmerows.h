#pragma once
// The rows of a channel's programme list: day headings ("Yesterday", "Today", "Tomorrow",
// "Monday 23 November") and the programmes under them, each past, on air or to come, and
// whether the channel's archive holds it.
#include "guide/programmeguide.h"
#include "sources/catchupsettings.h"

#include <QDate>
#include <QList>
#include <QString>
#include <optional>

namespace ProgrammeRows {

enum class When { past, onAir, future };

struct Row
{
    bool isDay = false; // a day's heading, else a programme
    QString text; // the heading, or "HH:mm  Title" in local time
    qsizetype programme = -1; // into the programmes listed
    When when = When::future;
    bool archived = false; // the archive holds it: it can be played from its start
    friend bool operator==(const Row &, const Row &) = default;
};

// The heading of a local day, seen from today.
QString dayHeading(const QDate &day, const QDate &today);

// Where the list begins: the start of the archive window (at most 14 days back), or the
// start of today for a channel without an archive.
qint64 listedFrom(const std::optional<CatchupSettings> &catchup, qint64 now);

// The rows of programmes (ordered by start) that end after the list begins.
QList<Row> rows(const QList<ProgrammeGuide::Programme> &programmes,
                const std::optional<CatchupSettings> &catchup, qint64 now);

} // namespace ProgrammeRows
