#include "sourceaddress.h"

#include "urlparts.h"

#include <QStringList>

namespace SourceAddress {

QString normalizedRemoteAddress(const QString &text)
{
    QString result = text.trimmed();

    const qsizetype linkStart = result.indexOf(u"](");
    if (linkStart >= 0 && result.endsWith(u')')) {
        const qsizetype from = linkStart + 2;
        // The final ")" may be the one that "](" ends with, as in "[a]()"; then nothing remains.
        result = result.mid(from, std::max<qsizetype>(0, result.size() - 1 - from));
    }

    if (result.size() >= 3 && result.startsWith(u'<') && result.endsWith(u'>'))
        result = result.mid(1, result.size() - 2);

    return result.trimmed();
}

bool isIPTVPlaylistURL(const QUrl &url)
{
    if (UrlParts::pathExtension(url).toLower() == u"m3u")
        return true;
    for (const UrlParts::QueryItem &item : UrlParts::queryItems(url)) {
        const QString joined = (item.name + u'=' + item.value.value_or(QString())).toLower();
        for (QStringView marker : {u"type=m3u", u"format=m3u", u"output=m3u"}) {
            if (joined.contains(marker))
                return true;
        }
    }
    return false;
}

bool isLiveStreamURL(const QUrl &url)
{
    return UrlParts::pathExtension(url).toLower() == u"m3u8";
}

Classification classify(const QString &text)
{
    const std::optional<QUrl> url = UrlParts::parse(normalizedRemoteAddress(text));
    if (!url)
        return {};
    const QString scheme = url->scheme().toLower();
    if (scheme != u"http" && scheme != u"https")
        return {};
    if (std::optional<YouTubeContent> content = YouTubeContent::fromUrl(*url))
        return {SourceKind::youtube, *url, std::move(content), false};
    if (isIPTVPlaylistURL(*url))
        return {SourceKind::playlist, *url, std::nullopt, false};
    return {SourceKind::stream, *url, std::nullopt, isLiveStreamURL(*url)};
}

} // namespace SourceAddress

bool SourceAddress::isPlayableChannelAddress(const QUrl &url, bool listedInLocalFile)
{
    static const QStringList networkSchemes {
        QStringLiteral("http"),  QStringLiteral("https"), QStringLiteral("rtmp"),
        QStringLiteral("rtmps"), QStringLiteral("rtsp"),  QStringLiteral("rtp"),
        QStringLiteral("udp"),
    };
    if (!url.isValid() || url.isRelative())
        return false;
    const QString scheme = url.scheme().toLower();
    if (networkSchemes.contains(scheme))
        return !url.host().isEmpty();
    return listedInLocalFile && url.isLocalFile();
}
