// Any text as a typed address: cleaning, classification and video-service recognition must
// return, and the plain-address shortcut must agree with QUrl byte for byte.

#include "sources/plainaddress.h"
#include "sources/sourceaddress.h"
#include "sources/urlparts.h"
#include "sources/youtubecontent.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));

    if (const std::optional<QByteArray> plain = PlainAddress::encoded(text)) {
        const QUrl url(text, QUrl::TolerantMode);
        if (!url.isValid() || url.toEncoded() != *plain)
            std::abort();
    }

    const QString normalized = SourceAddress::normalizedRemoteAddress(text);
    if (normalized.trimmed() != normalized)
        std::abort();

    const SourceAddress::Classification result = SourceAddress::classify(text);
    switch (result.kind) {
    case SourceAddress::SourceKind::youtube:
        if (!result.youtubeContent || result.youtubeContent->id() == u"|")
            std::abort();
        break;
    case SourceAddress::SourceKind::invalid:
        if (!result.url.isEmpty())
            std::abort();
        break;
    case SourceAddress::SourceKind::playlist:
    case SourceAddress::SourceKind::stream:
        if (!SourceAddress::isIPTVPlaylistURL(result.url)
            != (result.kind == SourceAddress::SourceKind::stream))
            std::abort();
        break;
    }

    if (const std::optional<QUrl> url = UrlParts::parse(text)) {
        UrlParts::pathExtension(*url);
        UrlParts::queryItems(*url);
        UrlParts::removingPercentEncoding(UrlParts::lastPathComponent(*url));
        if (std::optional<YouTubeContent> content = YouTubeContent::fromUrl(*url)) {
            if (content->videoID() && content->videoID()->isEmpty())
                std::abort();
            if (content->playlistID() && content->playlistID()->isEmpty())
                std::abort();
        }
    }
    return 0;
}
