// PlayerModel's audio and subtitle tracks: choices from the menus and keys, each told in a
// notice, and subtitle files added to the playing video.
#include "openpanels.h"
#include "playermodel.h"
#include "trackchoice.h"
#include "tracknames.h"

#include <QFileInfo>

void PlayerModel::connectTracks()
{
    connect(m_player.get(), &MediaPlayer::tracksChanged, this, &PlayerModel::tracksChanged);
    connect(this, &PlayerModel::youtubeContentChanged, this, &PlayerModel::tracksChanged);
    connect(m_player.get(), &MediaPlayer::subtitleFileFailed, this, [this](const QString &path) {
        showToast(
            QStringLiteral("Could not load the subtitle file %1.").arg(QFileInfo(path).fileName()));
    });
    m_player->setSubtitlesVisible(m_subtitlesVisible);
}

MediaTracks PlayerModel::tracks() const
{
    if (m_youtubeContent || !m_player->hasItem())
        return {};
    return m_player->tracks();
}

bool PlayerModel::hasVideoItem() const
{
    return !m_youtubeContent && m_player->hasItem() && !m_player->soundOnly();
}

void PlayerModel::selectTrack(TrackKind kind, std::optional<qint64> id)
{
    const MediaTracks all = tracks();
    const MediaTracks candidates = TrackChoice::ofKind(all, kind);
    if (candidates.isEmpty())
        return;
    const auto track
        = std::find_if(candidates.cbegin(), candidates.cend(),
                       [&](const MediaTrack &candidate) { return candidate.id == id; });
    if (id && track == candidates.cend())
        return;
    m_player->selectTrack(kind, id);
    if (kind == TrackKind::audio) {
        showToast(QStringLiteral("Audio: %1").arg(TrackNames::shortName(*track)));
        return;
    }
    // Subtitles chosen are subtitles to be seen.
    if (id && !m_subtitlesVisible) {
        m_subtitlesVisible = true;
        m_player->setSubtitlesVisible(true);
        Q_EMIT subtitlesVisibleChanged();
    }
    showToast(id ? QStringLiteral("Subtitles: %1").arg(TrackNames::shortName(*track))
                 : QStringLiteral("Subtitles: Off"));
}

void PlayerModel::cycleTrack(TrackKind kind)
{
    const MediaTracks all = tracks();
    if (TrackChoice::ofKind(all, kind).isEmpty())
        return;
    selectTrack(kind, TrackChoice::next(all, kind));
}

void PlayerModel::toggleSubtitlesVisible()
{
    const MediaTracks all = tracks();
    if (TrackChoice::ofKind(all, TrackKind::subtitle).isEmpty())
        return;
    m_subtitlesVisible = !m_subtitlesVisible;
    m_player->setSubtitlesVisible(m_subtitlesVisible);
    Q_EMIT subtitlesVisibleChanged();
    const std::optional<MediaTrack> shown = TrackChoice::selected(all, TrackKind::subtitle);
    showToast(m_subtitlesVisible && shown
                  ? QStringLiteral("Subtitles: %1").arg(TrackNames::shortName(*shown))
                  : QStringLiteral("Subtitles: Off"));
}

void PlayerModel::loadSubtitleFile()
{
    if (!m_fileChooser || !hasVideoItem())
        return;
    if (const std::optional<QString> path = m_fileChooser(OpenPanels::loadSubtitles()))
        addSubtitleFile(*path);
}

void PlayerModel::addSubtitleFile(const QString &path)
{
    if (!hasVideoItem())
        return;
    if (!m_subtitlesVisible) {
        m_subtitlesVisible = true;
        m_player->setSubtitlesVisible(true);
        Q_EMIT subtitlesVisibleChanged();
    }
    m_player->addSubtitleFile(QFileInfo(path).absoluteFilePath());
}
