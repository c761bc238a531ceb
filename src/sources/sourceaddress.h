#pragma once

// Rules that turn what the user typed, pasted or dropped into a source the player can open.

#include "youtubecontent.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace SourceAddress {

inline constexpr QStringView invalidAddressMessage = u"Enter a valid HTTP or HTTPS address.";

// Cleans a typed address: trims it and unwraps the Markdown link and angle-bracket forms.
// Adds no scheme.
QString normalizedRemoteAddress(const QString &text);

// True when the address names an M3U channel playlist to download and parse rather than a
// stream to play. ".m3u8" addresses are HLS streams, not playlists.
bool isIPTVPlaylistURL(const QUrl &url);

// True when the address's path extension is "m3u8", compared lower-cased.
bool isLiveStreamURL(const QUrl &url);

enum class SourceKind { invalid, youtube, playlist, stream };

struct Classification
{
    SourceKind kind = SourceKind::invalid;
    QUrl url; // the parsed address; empty when invalid
    std::optional<YouTubeContent> youtubeContent; // for youtube
    bool isLiveStream = false; // for stream
};

// True when a channel of a playlist may be played from its address. A playlist from the
// network only names network streams: HTTP and HTTPS, and the RTMP, RTSP, RTP and UDP streams
// of IPTV services. A playlist imported from a file may also name local files. Anything else
// (mpv's av://, lavf://, edl://, fd://, memory://...) would let a list read what it should not.
bool isPlayableChannelAddress(const QUrl &url, bool listedInLocalFile);

// Classifies a typed address in the order the player opens it: clean, parse, require http or
// https, then video service, playlist, stream.
Classification classify(const QString &text);

} // namespace SourceAddress
