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
    // Programmes kept: those whose stop, shifted, lies this far behind (or since the start of
    // the local day, if earlier) to this far ahead of the moment the guide is built for. A
    // channel with an archive keeps those of its archive window too (at most 14 days).
    static constexpr qint64 keptBehind = 2 * 3600;
    static constexpr qint64 keptAhead = 48 * 3600;
    // The earliest stop kept of a channel without an archive.
    static qint64 keptFrom(qint64 moment);

    struct Programme
    {
        QString title;
        qint64 start = 0; // seconds since the epoch, UTC, shift applied
        qint64 stop = 0;
        QString catchupId; // empty when the guide gives none
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
    // Every programme kept for the entry, ordered by start.
    QList<Programme> programmes(qsizetype entry) const;
    // The entry's tvg-shift in seconds, as applied to its programmes.
    qint32 shiftOf(qsizetype entry) const;
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
