#include "youtubecontent.h"

#include "urlparts.h"

namespace {

bool isDomainOrSubdomain(QStringView host, QStringView domain)
{
    if (host == domain)
        return true;
    return host.size() > domain.size() && host.endsWith(domain)
        && host[host.size() - domain.size() - 1] == u'.';
}

std::optional<QString> nonEmptyTrimmed(const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    QString trimmed = text->trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;
    return trimmed;
}

std::optional<QString> firstQueryValue(const QList<UrlParts::QueryItem> &items, QStringView name)
{
    for (const UrlParts::QueryItem &item : items) {
        if (item.name == name)
            return item.value;
    }
    return std::nullopt;
}

} // namespace

YouTubeContent::YouTubeContent(QString videoID, QString playlistID)
    : m_videoID(std::move(videoID))
    , m_playlistID(std::move(playlistID))
{ }

std::optional<YouTubeContent> YouTubeContent::make(const std::optional<QString> &videoID,
                                                   const std::optional<QString> &playlistID)
{
    // Taken as plain strings, an empty one standing for none: moving optional strings through
    // here made GCC 14 see an uninitialised read that is not there (-Wmaybe-uninitialized).
    QString video = videoID.value_or(QString());
    QString playlist = playlistID.value_or(QString());
    if (video.isEmpty() && playlist.isEmpty())
        return std::nullopt;
    return YouTubeContent(std::move(video), std::move(playlist));
}

std::optional<QString> YouTubeContent::videoID() const
{
    return m_videoID.isEmpty() ? std::nullopt : std::optional(m_videoID);
}

std::optional<QString> YouTubeContent::playlistID() const
{
    return m_playlistID.isEmpty() ? std::nullopt : std::optional(m_playlistID);
}

std::optional<YouTubeContent> YouTubeContent::fromUrl(const QUrl &url)
{
    // QUrl already lower-cases registered host names; lower-casing again keeps the rule explicit.
    const QString host = url.host(QUrl::FullyDecoded).toLower();
    if (host.isEmpty())
        return std::nullopt;
    const bool isShortLink = host == shortLinkHost;
    if (!isShortLink && !isDomainOrSubdomain(host, mainDomain)
        && !isDomainOrSubdomain(host, embeddingDomain))
        return std::nullopt;

    const QList<UrlParts::QueryItem> query = UrlParts::queryItems(url);
    const std::optional<QString> playlistID = firstQueryValue(query, u"list");

    std::optional<QString> videoID;
    const QStringList components = UrlParts::pathComponents(url);
    if (isShortLink) {
        if (!components.isEmpty())
            videoID = components.first();
    } else if (url.path(QUrl::FullyDecoded) == u"/watch") {
        videoID = firstQueryValue(query, u"v");
    } else {
        for (qsizetype i = 0; i < components.size(); ++i) {
            const QString &component = components[i];
            if (component == u"shorts" || component == u"embed" || component == u"live") {
                if (i + 1 < components.size())
                    videoID = components[i + 1];
                break;
            }
        }
    }
    return make(nonEmptyTrimmed(videoID), nonEmptyTrimmed(playlistID));
}

QString YouTubeContent::id() const
{
    return m_videoID + u'|' + m_playlistID;
}

size_t qHash(const YouTubeContent &content, size_t seed) noexcept
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, content.m_videoID);
    return combine(seed, content.m_playlistID);
}
