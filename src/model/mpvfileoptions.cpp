#include "mpvfileoptions.h"

#include "mpvnames.h"

using namespace MpvNames;

namespace {

QString argument(const char *name)
{
    return QLatin1StringView(name);
}

// One "key=value" of an option whose value is a list, the value quoted by its length so that
// commas, equals signs and quotes in it stay part of it.
QByteArray fileOption(QByteArrayView key, QByteArrayView value)
{
    return key.toByteArray() + "=%" + QByteArray::number(value.size()) + '%' + value.toByteArray();
}

} // namespace

// The options a network item is loaded with: its request headers, and the only protocols its
// demuxer may open on its behalf (an HLS index naming file: or other local addresses as
// segments is refused).
QVariantMap MpvFileOptions::network(const StreamHeaders &headers, Reconnect reconnect)
{
    // Each of these exists in FFmpeg 5.1 and 7.1. A retry waits at most 5 s.
    QByteArray reconnectOptions = "reconnect=1,reconnect_streamed=1,reconnect_delay_max=5";
    if (reconnect == Reconnect::afterCutsAndNetworkErrors)
        reconnectOptions += ",reconnect_on_network_error=1";
    QVariantMap options {
        {argument(Option::streamLavfOptions), reconnectOptions},
        // A list inside an option's value keeps its own quoting.
        {argument(Option::demuxerLavfOptions),
         fileOption("protocol_whitelist", networkProtocolWhitelist)},
        // mpv keeps up to 150 MB ahead and 50 MB behind by default: a live channel watched for
        // an evening would hold 200 MB of video nobody goes back to. Half a minute ahead is
        // ample against stalls; 16 MB behind still allows a short step back in a film.
        {argument(Option::cacheSeconds), QByteArray("30")},
        {argument(Option::demuxerMaxBytes), QByteArray("48MiB")},
        {argument(Option::demuxerMaxBackBytes), QByteArray("16MiB")},
        // mpv lends the unused space ahead to the part behind. A live stream is always near
        // its end, so that would keep 64 MB of played video instead of 16.
        {argument(Option::demuxerDonateBuffer), QByteArray("no")},
    };
    if (!headers.userAgent.isEmpty())
        options.insert(argument(Option::userAgent), headers.userAgent);
    if (!headers.referrer.isEmpty())
        options.insert(argument(Option::referrer), headers.referrer);
    return options;
}
