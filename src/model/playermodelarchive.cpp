// Catch-up: a channel's past programmes played from the provider's archive. The position and
// the slider follow the programme; a source that only knows where to begin is loaded again
// for each new moment.
#include "playermodel.h"

#include "mediaplayer.h"
#include "sources/catchupaddress.h"

#include <QDateTime>
#include <cmath>

namespace {

QString archiveTitle(const PlaylistEntry &entry, const ProgrammeGuide::Programme &programme)
{
    return entry.name() + QStringLiteral(" \u2014 ") + programme.title;
}

} // namespace

qsizetype PlayerModel::playlistPosition(const PlaylistEntry &entry) const
{
    const QList<PlaylistEntry> &entries = playlist();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries[i].id() == entry.id())
            return i;
    }
    return -1;
}

std::optional<ProgrammeGuide::Programme> PlayerModel::archiveProgramme() const
{
    if (!m_archive)
        return std::nullopt;
    return m_archive->programme;
}

bool PlayerModel::playArchive(const PlaylistEntry &entry,
                              const ProgrammeGuide::Programme &programme)
{
    const std::optional<CatchupSettings> &catchup = entry.catchup();
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    const qint32 shift
        = entry.tvgShiftSeconds().value_or(m_playlistHeader.shiftSeconds.value_or(0));
    std::optional<QString> pattern;
    if (catchup && catchup->archives(programme.start, now))
        pattern = CatchupAddress::pattern(*catchup, entry.url());
    if (!pattern
        || !CatchupAddress::of(*catchup, entry.url(),
                               {programme.start, programme.stop, programme.catchupId}, now,
                               shift)) {
        showToast(QStringLiteral("This channel has no archive of this programme."));
        return false;
    }
    ArchivePlayback archive;
    archive.entry = entry;
    archive.programme = programme;
    archive.shiftSeconds = shift;
    archive.reach = int(CatchupAddress::reachOf(*pattern));
    m_archive = std::move(archive);
    loadArchiveAt(0);
    Q_EMIT archiveChanged();
    return true;
}

void PlayerModel::loadArchiveAt(double seconds)
{
    ArchivePlayback archive = *m_archive;
    const auto reach = CatchupAddress::Reach(archive.reach);
    const qint64 length = archive.programme.stop - archive.programme.start;
    qint64 from = 0;
    if (reach != CatchupAddress::Reach::whole) {
        from = std::clamp<qint64>(qint64(std::floor(seconds)), 0, std::max<qint64>(0, length - 1));
        if (reach == CatchupAddress::Reach::fromStartToMinute)
            from -= (archive.programme.start + from) % 60;
        from = std::max<qint64>(0, from);
    }
    const ProgrammeGuide::Programme asked {archive.programme.title, archive.programme.start + from,
                                           archive.programme.stop, archive.programme.catchupId};
    const std::optional<QUrl> url = CatchupAddress::of(
        *archive.entry.catchup(), archive.entry.url(), {asked.start, asked.stop, asked.catchupId},
        QDateTime::currentSecsSinceEpoch(), archive.shiftSeconds);
    if (!url)
        return;
    archive.loadedFrom = double(from);
    startPlaying(*url, archiveTitle(archive.entry, archive.programme), false,
                 archive.entry.headers(), false);
    // Playing from the archive is still the channel: zapping and "Back to Live" start there.
    m_archive = std::move(archive);
    m_playingChannel = m_archive->entry;
    Q_EMIT playingChannelChanged();
    setDuration(double(length));
    setCurrentTime(double(from));
    if (reach == CatchupAddress::Reach::whole && seconds > 0)
        seekArchive(seconds);
}

void PlayerModel::seekArchive(double seconds)
{
    const double length = double(m_archive->programme.stop - m_archive->programme.start);
    const double target = std::clamp(seconds, 0.0, length);
    if (CatchupAddress::Reach(m_archive->reach) == CatchupAddress::Reach::whole) {
        m_player->seekExactly(target);
        setCurrentTime(target);
    } else {
        loadArchiveAt(target);
    }
    Q_EMIT seeked(target);
}

void PlayerModel::backToLive()
{
    if (!m_archive)
        return;
    const PlaylistEntry entry = m_archive->entry;
    playChannel(entry);
}
