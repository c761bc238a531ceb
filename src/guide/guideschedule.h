#pragma once
// One channel's programmes as the guide shows them, and what is on now and next.
#include <QtGlobal>
#include <optional>
#include <vector>

struct GuideProgramme
{
    qint64 start = 0; // seconds since the epoch, UTC
    qint64 stop = 0;
    quint32 title = 0; // an index into the guide's titles
    // The guide's catchup-id, as 1 + an index into the same texts as titles; 0 for none.
    quint32 catchupId = 0;
    friend bool operator==(const GuideProgramme &, const GuideProgramme &) = default;
};

// A programme as read, before the rules below; the order of a channel's programmes as read is
// their priority (earlier guides first, then earlier in the file).
struct ReadProgramme
{
    qint64 start = 0;
    std::optional<qint64> stop;
    quint32 title = 0;
    quint32 catchupId = 0; // as in GuideProgramme
};

namespace GuideSchedule {

// The channel's schedule: for one start the first programme read wins; ordered by start, a
// programme without a stop ends where the next one starts, the last one without a stop is
// dropped, and so is one whose stop is not after its start.
std::vector<GuideProgramme> build(std::vector<ReadProgramme> programmes);

struct NowNext
{
    std::optional<GuideProgramme> now;
    std::optional<GuideProgramme> next;
    friend bool operator==(const NowNext &, const NowNext &) = default;
};

// Now is the programme with the latest start at or before moment that has not stopped yet;
// next is the first that starts at or after now's stop (with no now, the first that starts
// after moment). schedule is ordered by start.
NowNext at(const std::vector<GuideProgramme> &schedule, qint64 moment);

} // namespace GuideSchedule
