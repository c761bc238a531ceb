#include "programmeguide.h"

#include <QDateTime>
#include <algorithm>
#include <limits>

namespace {

// Titles of several guides in one table, each text once.
class TitleTable
{
public:
    quint32 add(const QString &title)
    {
        const auto found = m_index.constFind(title);
        if (found != m_index.cend())
            return *found;
        const auto index = quint32(m_titles.size());
        m_titles.append(title);
        m_index.insert(title, index);
        return index;
    }
    QStringList take() { return std::move(m_titles); }

private:
    QStringList m_titles;
    QHash<QString, quint32> m_index;
};

} // namespace

ProgrammeGuide::ProgrammeGuide(const std::vector<GuideRead> &guides,
                               const QList<PlaylistEntry> &entries,
                               std::optional<qint32> playlistShift, qint64 moment)
{
    std::vector<std::vector<GuideChannel>> channelLists;
    channelLists.reserve(guides.size());
    for (const GuideRead &guide : guides)
        channelLists.push_back(guide.channels);
    const GuideChannels channels(channelLists);

    // Each entry's channel and shift; every channel's range of shifts, which bounds what of its
    // schedule any of its entries shows.
    struct Use
    {
        qint32 schedule = -1;
        qint32 minShift = std::numeric_limits<qint32>::max();
        qint32 maxShift = std::numeric_limits<qint32>::min();
        int archiveDays = 0; // the longest archive window of its entries
    };
    std::vector<Use> uses(channels.channels().size());
    std::vector<int> usedChannels; // in the order first used
    m_channelOfEntry.assign(size_t(entries.size()), -1);
    m_shiftOfEntry.assign(size_t(entries.size()), 0);
    // Guides that named no channel (none could be read) match no entry: a large playlist is not
    // walked for nothing while it is being shown.
    if (channels.channels().empty())
        return;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const PlaylistEntry &entry = entries[i];
        const qint32 shift = entry.tvgShiftSeconds().value_or(playlistShift.value_or(0));
        m_shiftOfEntry[size_t(i)] = shift;
        const std::optional<int> channel = channels.match(
            entry.tvgId().toString(), entry.tvgName().toString(), entry.nameView().toString());
        if (!channel)
            continue;
        Use &use = uses[size_t(*channel)];
        if (use.schedule < 0) {
            use.schedule = qint32(usedChannels.size());
            usedChannels.push_back(*channel);
        }
        use.minShift = std::min(use.minShift, shift);
        use.maxShift = std::max(use.maxShift, shift);
        if (const std::optional<CatchupSettings> &catchup = entry.catchup())
            use.archiveDays = std::max(use.archiveDays, catchup->windowDays());
        m_channelOfEntry[size_t(i)] = use.schedule;
        ++m_matched;
    }

    TitleTable titles;
    m_schedules.resize(usedChannels.size());
    for (size_t s = 0; s < usedChannels.size(); ++s) {
        const GuideChannel &channel = channels.channels()[size_t(usedChannels[s])];
        const Use &use = uses[size_t(usedChannels[s])];
        std::vector<ReadProgramme> read;
        std::vector<std::pair<size_t, quint32>> titleOf; // (guide, title) per programme read
        for (size_t g = 0; g < guides.size(); ++g) {
            const auto found = guides[g].programmes.constFind(channel.id);
            if (found == guides[g].programmes.cend())
                continue;
            for (const ReadProgramme &programme : *found) {
                ReadProgramme copy = programme;
                copy.title = quint32(titleOf.size());
                titleOf.emplace_back(g, programme.title);
                read.push_back(copy);
            }
        }
        // The stop, shifted for some entry of the channel, within the kept window.
        const qint64 from
            = std::min(keptFrom(moment), moment - qint64(use.archiveDays) * 86400) - use.maxShift;
        const qint64 until = moment + keptAhead - use.minShift;
        std::vector<GuideProgramme> schedule;
        for (GuideProgramme programme : GuideSchedule::build(std::move(read))) {
            if (programme.stop < from || programme.stop > until)
                continue;
            const auto &[guide, title] = titleOf[programme.title];
            programme.title
                = titles.add(QString::fromUtf8(guides[guide].titles.value(qsizetype(title))));
            if (programme.catchupId != 0) {
                programme.catchupId = 1
                    + titles.add(QString::fromUtf8(
                        guides[guide].titles.value(qsizetype(programme.catchupId - 1))));
            }
            schedule.push_back(programme);
        }
        m_programmeCount += qsizetype(schedule.size());
        m_schedules[s] = std::move(schedule);
    }
    m_titles = titles.take();

    // Every moment a shown programme starts or stops, once per distinct shift of a channel.
    std::vector<std::pair<qint32, qint32>> shown; // (schedule, shift)
    for (size_t i = 0; i < m_channelOfEntry.size(); ++i) {
        if (m_channelOfEntry[i] >= 0)
            shown.emplace_back(m_channelOfEntry[i], m_shiftOfEntry[i]);
    }
    std::sort(shown.begin(), shown.end());
    shown.erase(std::unique(shown.begin(), shown.end()), shown.end());
    for (const auto &[schedule, shift] : shown) {
        for (const GuideProgramme &programme : m_schedules[size_t(schedule)]) {
            // An archive's past changes nothing any more.
            if (programme.stop + shift < moment - keptBehind)
                continue;
            m_changes.push_back(programme.start + shift);
            m_changes.push_back(programme.stop + shift);
        }
    }
    std::sort(m_changes.begin(), m_changes.end());
    m_changes.erase(std::unique(m_changes.begin(), m_changes.end()), m_changes.end());
}

qint64 ProgrammeGuide::keptFrom(qint64 moment)
{
    const QDateTime startOfDay = QDateTime::fromSecsSinceEpoch(moment).date().startOfDay();
    return std::min(moment - keptBehind, startOfDay.toSecsSinceEpoch());
}

ProgrammeGuide::Programme ProgrammeGuide::shown(const GuideProgramme &programme, qint32 shift) const
{
    return {
        m_titles.value(qsizetype(programme.title)), programme.start + shift, programme.stop + shift,
        programme.catchupId == 0 ? QString() : m_titles.value(qsizetype(programme.catchupId - 1))};
}

QList<ProgrammeGuide::Programme> ProgrammeGuide::programmes(qsizetype entry) const
{
    QList<Programme> list;
    if (entry < 0 || size_t(entry) >= m_channelOfEntry.size()
        || m_channelOfEntry[size_t(entry)] < 0)
        return list;
    const qint32 shift = m_shiftOfEntry[size_t(entry)];
    const std::vector<GuideProgramme> &schedule
        = m_schedules[size_t(m_channelOfEntry[size_t(entry)])];
    list.reserve(qsizetype(schedule.size()));
    for (const GuideProgramme &programme : schedule)
        list.append(shown(programme, shift));
    return list;
}

qint32 ProgrammeGuide::shiftOf(qsizetype entry) const
{
    if (entry < 0 || size_t(entry) >= m_shiftOfEntry.size())
        return 0;
    return m_shiftOfEntry[size_t(entry)];
}

ProgrammeGuide::NowNext ProgrammeGuide::at(qsizetype entry, qint64 moment) const
{
    if (entry < 0 || size_t(entry) >= m_channelOfEntry.size()
        || m_channelOfEntry[size_t(entry)] < 0)
        return {};
    const qint32 shift = m_shiftOfEntry[size_t(entry)];
    const GuideSchedule::NowNext found
        = GuideSchedule::at(m_schedules[size_t(m_channelOfEntry[size_t(entry)])], moment - shift);
    NowNext result;
    if (found.now)
        result.now = shown(*found.now, shift);
    if (found.next)
        result.next = shown(*found.next, shift);
    return result;
}

std::optional<qint64> ProgrammeGuide::nextChange(qint64 moment) const
{
    const auto after = std::upper_bound(m_changes.begin(), m_changes.end(), moment);
    if (after == m_changes.end())
        return std::nullopt;
    return *after;
}
