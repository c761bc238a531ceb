#include "mpvtracks.h"

#include <QByteArrayView>
#include <mpv/client.h>
#include <optional>

namespace MpvTracks {

namespace {

QString text(const mpv_node &value)
{
    return value.format == MPV_FORMAT_STRING ? QString::fromUtf8(value.u.string) : QString();
}

bool flag(const mpv_node &value)
{
    return value.format == MPV_FORMAT_FLAG && value.u.flag != 0;
}

qint64 integer(const mpv_node &value)
{
    return value.format == MPV_FORMAT_INT64 ? value.u.int64 : 0;
}

std::optional<MediaTrack> trackFrom(const mpv_node &entry)
{
    if (entry.format != MPV_FORMAT_NODE_MAP)
        return std::nullopt;
    MediaTrack track;
    bool known = false;
    bool hasID = false;
    for (int i = 0; i < entry.u.list->num; ++i) {
        const QByteArrayView key(entry.u.list->keys[i]);
        const mpv_node &value = entry.u.list->values[i];
        if (key == "type") {
            const QString type = text(value);
            known = type == u"audio" || type == u"sub";
            track.kind = type == u"sub" ? TrackKind::subtitle : TrackKind::audio;
        } else if (key == "id") {
            track.id = integer(value);
            hasID = value.format == MPV_FORMAT_INT64;
        } else if (key == "lang") {
            track.language = text(value);
        } else if (key == "title") {
            track.title = text(value);
        } else if (key == "codec") {
            track.codec = text(value);
        } else if (key == "demux-channel-count") {
            track.channelCount = int(integer(value));
        } else if (key == "default") {
            track.isDefault = flag(value);
        } else if (key == "forced") {
            track.isForced = flag(value);
        } else if (key == "external") {
            track.isExternal = flag(value);
        } else if (key == "selected") {
            track.isSelected = flag(value);
        }
    }
    if (!known || !hasID)
        return std::nullopt;
    return track;
}

} // namespace

MediaTracks fromNode(const mpv_node &trackList)
{
    MediaTracks tracks;
    if (trackList.format != MPV_FORMAT_NODE_ARRAY)
        return tracks;
    for (int i = 0; i < trackList.u.list->num; ++i)
        if (const std::optional<MediaTrack> track = trackFrom(trackList.u.list->values[i]))
            tracks.append(*track);
    return tracks;
}

} // namespace MpvTracks
