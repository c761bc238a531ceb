#pragma once
// The entries mpv inserted in place of an address that turned out to be a playlist (a radio
// link's .pls or .m3u), as the player loads them itself: only those a channel may lead to.
#include <QList>
#include <QUrl>

struct mpv_node;

namespace ExpandedPlaylist {

// The entries of mpv's "playlist" property whose ids are firstID to firstID + count - 1, in
// playlist order, that pass the channel address rules (network addresses; files too when the
// playlist is a local file). Anything else is left out.
QList<QUrl> insertedEntries(const mpv_node &playlist, qint64 firstID, qint64 count,
                            bool listedInLocalFile);

// Whether any of those entries has a title: mpv takes them from #EXTINF lines, which an IPTV
// channel list has and a radio link's list of bare addresses does not (HLS indexes never
// become mpv playlists).
bool hasTitledEntries(const mpv_node &playlist, qint64 firstID, qint64 count);

// An entry's file name as mpv lists it: an address, or an absolute path. Invalid otherwise.
QUrl entryUrl(QByteArrayView filename);

} // namespace ExpandedPlaylist
