#pragma once

// One channel of a playlist: a playable address with its name, logo, group and country, and the
// request headers the playlist names for it.

#include "streamheaders.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <memory>
#include <optional>

class PlaylistEntry
{
public:
    PlaylistEntry() = default; // an empty placeholder, as containers need one
    PlaylistEntry(QUuid id, QString name, const QUrl &url, const std::optional<QUrl> &logoURL,
                  std::optional<QString> groupTitle, std::optional<QString> countryCode);

    // The same from addresses already in QUrl's fully encoded form; used by the parser, which
    // keeps addresses as compact bytes so that huge playlists stay small in memory.
    static PlaylistEntry fromEncoded(QUuid id, QString name, QByteArray encodedUrl,
                                     QByteArray encodedLogoURL, QString groupTitle,
                                     QString countryCode);

    QUuid id() const { return m_id; }
    const QString &name() const { return m_name; }
    QUrl url() const;
    std::optional<QUrl> logoURL() const;
    std::optional<QString> groupTitle() const;
    std::optional<QString> countryCode() const;
    // Not one of the compared fields: two entries that differ only here are equal.
    const StreamHeaders &headers() const;
    void setHeaders(std::shared_ptr<const StreamHeaders> headers);

    // The addresses as written into requests (percent-encoded).
    const QByteArray &encodedUrl() const { return m_url; }
    const QByteArray &encodedLogoURL() const { return m_logoURL; }

    friend bool operator==(const PlaylistEntry &a, const PlaylistEntry &b)
    {
        return a.m_id == b.m_id && a.m_name == b.m_name && a.m_url == b.m_url
            && a.m_logoURL == b.m_logoURL && a.m_groupTitle == b.m_groupTitle
            && a.m_countryCode == b.m_countryCode;
    }
    friend size_t qHash(const PlaylistEntry &entry, size_t seed) noexcept;

private:
    // Absent optional values are null (never empty) strings: the parser only keeps non-empty
    // groups, exactly two-character countries and non-empty logo addresses.
    QUuid m_id;
    QString m_name;
    QByteArray m_url;
    QByteArray m_logoURL;
    QString m_groupTitle;
    QString m_countryCode;
    // Shared: most entries have none, and those that do mostly share one set.
    std::shared_ptr<const StreamHeaders> m_headers;
};

// Moved as bytes when a list of channels grows: nothing in an entry points into itself.
Q_DECLARE_TYPEINFO(PlaylistEntry, Q_RELOCATABLE_TYPE);
