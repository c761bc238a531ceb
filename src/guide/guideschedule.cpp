#include "guideschedule.h"

#include <algorithm>

namespace GuideSchedule {

std::vector<GuideProgramme> build(std::vector<ReadProgramme> programmes)
{
    // Stable: among programmes of one start, the first read stays first and is kept.
    std::stable_sort(
        programmes.begin(), programmes.end(),
        [](const ReadProgramme &a, const ReadProgramme &b) { return a.start < b.start; });
    programmes.erase(std::unique(programmes.begin(), programmes.end(),
                                 [](const ReadProgramme &a, const ReadProgramme &b) {
                                     return a.start == b.start;
                                 }),
                     programmes.end());
    std::vector<GuideProgramme> schedule;
    schedule.reserve(programmes.size());
    for (std::size_t i = 0; i < programmes.size(); ++i) {
        const ReadProgramme &programme = programmes[i];
        std::optional<qint64> stop = programme.stop;
        if (!stop && i + 1 < programmes.size())
            stop = programmes[i + 1].start;
        if (!stop || *stop <= programme.start)
            continue;
        schedule.push_back({programme.start, *stop, programme.title, programme.catchupId});
    }
    return schedule;
}

NowNext at(const std::vector<GuideProgramme> &schedule, qint64 moment)
{
    NowNext result;
    // The programmes that started at or before the moment end at the first one after it.
    const auto started = std::upper_bound(
        schedule.cbegin(), schedule.cend(), moment,
        [](qint64 value, const GuideProgramme &programme) { return value < programme.start; });
    // Overlaps are possible: the latest start that still runs wins.
    for (auto candidate = started; candidate != schedule.cbegin();) {
        --candidate;
        if (moment < candidate->stop) {
            result.now = *candidate;
            break;
        }
    }
    const auto byStart = [](const GuideProgramme &programme, qint64 value) {
        return programme.start < value;
    };
    const auto next = result.now
        ? std::lower_bound(schedule.cbegin(), schedule.cend(), result.now->stop, byStart)
        : started;
    if (next != schedule.cend())
        result.next = *next;
    return result;
}

} // namespace GuideSchedule
