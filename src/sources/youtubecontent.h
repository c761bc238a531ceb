#pragma once

// A recognised video-service address: a video, a service playlist, or both. Played through the
// embedded web player rather than by the media player.

#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

class YouTubeContent
{
public:
    // The service's hosts. Subdomains of the main and embedding domains are accepted too.
    static constexpr QStringView shortLinkHost = u"youtu.be";
    static constexpr QStringView mainDomain = u"youtube.com";
    static constexpr QStringView embeddingDomain = u"youtube-nocookie.com";

    // Recognises a video-service address; nothing when the address is not one.
    static std::optional<YouTubeContent> fromUrl(const QUrl &url);

    // At least one identifier must be present and neither may be empty.
    static std::optional<YouTubeContent> make(const std::optional<QString> &videoID,
                                              const std::optional<QString> &playlistID);

    std::optional<QString> videoID() const;
    std::optional<QString> playlistID() const;

    // Identity for lists: "<videoID>|<playlistID>", an absent identifier written as empty text.
    QString id() const;

    friend bool operator==(const YouTubeContent &, const YouTubeContent &) = default;
    friend size_t qHash(const YouTubeContent &content, size_t seed) noexcept;

private:
    YouTubeContent(QString videoID, QString playlistID);

    QString m_videoID; // empty when there is none
    QString m_playlistID; // empty when there is none
};
