#pragma once
// The per-file options a network item is loaded with in mpv: its request headers, the protocols
// FFmpeg may open for it, and a cache sized for live channels watched for hours.
#include "sources/streamheaders.h"
#include <QByteArrayView>
#include <QVariantMap>

namespace MpvFileOptions {

// The protocols FFmpeg may open on behalf of a network item (segments, keys, redirects).
inline constexpr QByteArrayView networkProtocolWhitelist
    = "http,https,tls,tcp,crypto,httpproxy,data,rtmp,rtmps,rtsp,rtp,udp,srtp";

// How a network item's connection is kept. FFmpeg's HTTP reader reconnects a stream cut before
// its end; retrying after network errors too is only for a stream that has played, since a dead
// server would otherwise be tried again and again before the item is given up.
enum class Reconnect {
    afterCuts,
    afterCutsAndNetworkErrors,
};

// The options of loadfile for a network item, by option name.
QVariantMap network(const StreamHeaders &headers, Reconnect reconnect = Reconnect::afterCuts);

} // namespace MpvFileOptions
