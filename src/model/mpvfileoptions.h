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

// The options of loadfile for a network item, by option name.
QVariantMap network(const StreamHeaders &headers);

} // namespace MpvFileOptions
