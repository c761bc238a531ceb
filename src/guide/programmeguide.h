#pragma once
// The programmes of a playlist's channels, merged from the guides it was given: what is on now
// and next for each entry, with its tvg-shift applied, and when any of that next changes. Kept
// only around the moment it was built for, titles stored once each.
#include "sources/playlistentry.h"

#include "guidechannels.h"
#include "guideschedule.h"
#include "xmltvreader.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

class ProgrammeGuide
{
public:
    // Programmes kept: those whose stop, shifted, lies this far behind to this far ahead of the
    // moment the guide is built for.
    static constexpr qint64 keptBehind = 2 * 3600;
    static constexpr qint64 keptAhead = 48 * 3600;

    struct Programme
    {
        QString title;
        qint64 start = 0; // seconds since the epoch, UTC, shift applied
        qint64 stop = 0;
        friend bool operator==(const Programme &, const Programme &) = default;
    };
    struct NowNext
    {
        std::optional<Programme> now;
        std::optional<Programme> next;
        friend bool operator==(const NowNext &, const NowNext &) = default;
    };

    ProgrammeGuide() = default;
    // guides in the playlist header's order (or as the user gave them); playlistShift is the
    // #EXTM3U line's tvg-shift in seconds, which an entry's own replaces.
    ProgrammeGuide(const std::vector<GuideRead> &guides, const QList<PlaylistEntry> &entries,
                   std::optional<qint32> playlistShift, qint64 moment);

    // For the entry at this position of the playlist the guide was built for.
    NowNext at(qsizetype entry, qint64 moment) const;
    // The first moment after this one at which some entry's now or next changes.
    std::optional<qint64> nextChange(qint64 moment) const;

    // How many entries have a channel in the guides, and how many programmes are kept.
    qsizetype matchedEntries() const { return m_matched; }
    qsizetype programmeCount() const { return m_programmeCount; }
    bool isEmpty() const { return m_programmeCount == 0; }

private:
    Programme shown(const GuideProgramme &programme, qint32 shift) const;

    std::vector<qint32> m_channelOfEntry; // an index into m_schedules, or -1
    std::vector<qint32> m_shiftOfEntry;
    std::vector<std::vector<GuideProgramme>> m_schedules; // guide times, before any shift
    QStringList m_titles;
    std::vector<qint64> m_changes; // every shifted start and stop, ordered, once each
    qsizetype m_matched = 0;
    qsizetype m_programmeCount = 0;
};
