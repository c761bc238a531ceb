// MpvPlayer's audio and subtitle tracks: the choice an item starts with, selections, subtitle
// files, who draws the subtitles, and what a file with sound and no picture is.
#include "mpvnames.h"
#include "mpvplayer.h"
#include "mpvtracks.h"
#include "trackchoice.h"

#include <QLocale>
#include <mpv/client.h>

using namespace MpvNames;

namespace {

const char *trackProperty(TrackKind kind)
{
    return kind == TrackKind::audio ? Property::audioTrack : Property::subtitleTrack;
}

} // namespace

void MpvPlayer::setTracks(const MediaTracks &tracks)
{
    if (tracks == m_tracks)
        return;
    m_tracks = tracks;
    Q_EMIT tracksChanged();
}

void MpvPlayer::chooseInitialTracks()
{
    // Read at once: the track list's change is reported only after this event.
    mpv_node list {};
    if (mpv_get_property(m_handle.get(), Property::trackList, MPV_FORMAT_NODE, &list) < 0)
        return;
    const MediaTracks tracks = MpvTracks::fromNode(list);
    mpv_free_node_contents(&list);
    const QLocale::Language language = QLocale::system().language();
    for (const TrackKind kind : {TrackKind::audio, TrackKind::subtitle}) {
        const std::optional<qint64> chosen = TrackChoice::initial(tracks, kind, language);
        const std::optional<MediaTrack> current = TrackChoice::selected(tracks, kind);
        if (chosen && (!current || current->id != *chosen))
            selectTrack(kind, chosen);
    }
    setTracks(tracks);
}

void MpvPlayer::selectTrack(TrackKind kind, std::optional<qint64> id)
{
    if (id) {
        qint64 number = *id;
        mpv_set_property(m_handle.get(), trackProperty(kind), MPV_FORMAT_INT64, &number);
    } else {
        mpv_set_property_string(m_handle.get(), trackProperty(kind), "no");
    }
}

void MpvPlayer::addSubtitleFile(const QString &path)
{
    const quint64 reply = ++m_lastReplyID;
    m_subtitleFilesAdding.insert(reply, path);
    const bool sent
        = command({{QString::fromLatin1(Command::name), QByteArray(Command::subtitleAdd)},
                   {QString::fromLatin1(Command::url), path.toUtf8()},
                   {QString::fromLatin1(Command::flags), QByteArray(Command::select)}},
                  reply);
    if (!sent) {
        m_subtitleFilesAdding.remove(reply);
        Q_EMIT subtitleFileFailed(path);
    }
}

void MpvPlayer::handleSubtitleReply(quint64 replyID, int error)
{
    const auto adding = m_subtitleFilesAdding.constFind(replyID);
    if (adding == m_subtitleFilesAdding.cend())
        return;
    const QString path = *adding;
    m_subtitleFilesAdding.erase(adding);
    if (error < 0)
        Q_EMIT subtitleFileFailed(path);
}

void MpvPlayer::setSubtitlesVisible(bool visible)
{
    if (visible == m_subtitlesVisible)
        return;
    m_subtitlesVisible = visible;
    updateSubtitleVisibility();
    Q_EMIT subtitlesVisibleChanged(visible);
}

void MpvPlayer::setSubtitlesDrawnByView(bool drawnByView)
{
    m_subtitlesDrawnByView = drawnByView;
    updateSubtitleVisibility();
}

void MpvPlayer::updateSubtitleVisibility()
{
    // sub-text keeps reporting the text while mpv draws none.
    int flag = m_subtitlesVisible && !m_subtitlesDrawnByView ? 1 : 0;
    mpv_set_property(m_handle.get(), Property::subtitleVisibility, MPV_FORMAT_FLAG, &flag);
}

void MpvPlayer::setSubtitleText(const QString &text)
{
    if (text == m_subtitleText)
        return;
    m_subtitleText = text;
    Q_EMIT subtitleTextChanged(text);
}

std::optional<SoundDescription> MpvPlayer::describeSoundOnly() const
{
    mpv_node tracks {};
    if (mpv_get_property(m_handle.get(), Property::trackList, MPV_FORMAT_NODE, &tracks) < 0)
        return std::nullopt;
    bool sound = false;
    bool picture = false;
    if (tracks.format == MPV_FORMAT_NODE_ARRAY) {
        for (int i = 0; i < tracks.u.list->num; ++i) {
            const mpv_node &track = tracks.u.list->values[i];
            if (track.format != MPV_FORMAT_NODE_MAP)
                continue;
            for (int k = 0; k < track.u.list->num; ++k) {
                const mpv_node &value = track.u.list->values[k];
                if (QByteArrayView(track.u.list->keys[k]) != "type"
                    || value.format != MPV_FORMAT_STRING)
                    continue;
                sound = sound || QByteArrayView(value.u.string) == "audio";
                picture = picture || QByteArrayView(value.u.string) == "video";
            }
        }
    }
    mpv_free_node_contents(&tracks);
    if (!sound || picture)
        return std::nullopt;
    const auto tag = [this](const char *name) {
        char *value = mpv_get_property_string(m_handle.get(), name);
        const QString text = value ? QString::fromUtf8(value).trimmed() : QString();
        mpv_free(value);
        return text;
    };
    return SoundDescription {tag(Property::tagTitle), tag(Property::tagArtist),
                             tag(Property::tagAlbum)};
}
