#pragma once

// One channel of a playlist: a playable address with its name, logo, group and country, and the
// request headers the playlist names for it.

#include "channeloptions.h"
#include "entrytextarena.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <QUrl>
#include <QUuid>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

// What ties an entry to a programme guide's channel, as its #EXTINF line gives it: tvg-id,
// tvg-name (empty views when absent) and tvg-shift in seconds.
struct PlaylistGuideKeys
{
    QStringView tvgId;
    QStringView tvgName;
    std::optional<qint32> shiftSeconds;
};

// A group and a country, shared by the entries that have the same: a big list has few of each.
// Null strings when absent.
struct PlaylistLabels
{
    QString groupTitle;
    QString countryCode;
};

// An entry's labels and options together, shared by the entries that have both the same: one
// pointer in each entry rather than two. Null pointers for what is absent.
struct PlaylistEntryDetails
{
    std::shared_ptr<const PlaylistLabels> labels;
    std::shared_ptr<const ChannelOptions> options;
};

class PlaylistEntry
{
public:
    PlaylistEntry() = default; // an empty placeholder, as containers need one
    PlaylistEntry(QUuid id, QString name, const QUrl &url, const std::optional<QUrl> &logoURL,
                  std::optional<QString> groupTitle, std::optional<QString> countryCode);

    // The same from addresses already in QUrl's fully encoded form; used by the parser, which
    // keeps addresses as compact bytes so that huge playlists stay small in memory. An empty
    // logo address is none; labels hold null strings for what is absent. The texts are kept in
    // arena when one is given.
    static PlaylistEntry fromEncoded(QUuid id, QStringView name, QByteArrayView encodedUrl,
                                     QByteArrayView encodedLogoURL,
                                     std::shared_ptr<const PlaylistLabels> labels,
                                     const PlaylistGuideKeys &guideKeys = {},
                                     EntryTextArena *arena = nullptr);
    // The same with labels and options already shared (see PlaylistEntryDetails).
    static PlaylistEntry fromEncoded(QUuid id, QStringView name, QByteArrayView encodedUrl,
                                     QByteArrayView encodedLogoURL,
                                     std::shared_ptr<const PlaylistEntryDetails> details,
                                     const PlaylistGuideKeys &guideKeys, EntryTextArena *arena);

    QUuid id() const { return m_id; }
    QString name() const { return nameView().toString(); }
    // The name without a copy, valid while the entry is.
    QStringView nameView() const { return textAt(0, m_nameSize); }
    QUrl url() const;
    std::optional<QUrl> logoURL() const;
    std::optional<QString> groupTitle() const;
    std::optional<QString> countryCode() const;
    // The guide keys, valid while the entry is; empty views when absent.
    QStringView tvgId() const { return textAt(m_nameSize, m_tvgIdSize); }
    QStringView tvgName() const;
    // The entry's own tvg-shift in seconds; nothing when the playlist's applies.
    std::optional<qint32> tvgShiftSeconds() const;
    // Not compared, as the options below: two entries that differ only here are equal.
    const StreamHeaders &headers() const;
    // How the channel's past programmes are reached; nothing when it has no archive.
    const std::optional<CatchupSettings> &catchup() const;
    void setOptions(std::shared_ptr<const ChannelOptions> options);

    // The addresses as written into requests (percent-encoded), valid while the entry is; a
    // null view when there is no logo.
    QByteArrayView encodedUrl() const;
    QByteArrayView encodedLogoURL() const;

    friend bool operator==(const PlaylistEntry &a, const PlaylistEntry &b)
    {
        return a.m_id == b.m_id && a.m_nameSize == b.m_nameSize && a.m_logoAt == b.m_logoAt
            && a.m_tvgIdSize == b.m_tvgIdSize && a.m_tvgNameSize == b.m_tvgNameSize
            && a.m_shiftSeconds == b.m_shiftSeconds && a.texts() == b.texts() && sameLabels(a, b);
    }
    friend size_t qHash(const PlaylistEntry &entry, size_t seed) noexcept;

private:
    static PlaylistEntry withTexts(QUuid id, QStringView name, QByteArrayView url,
                                   std::optional<QByteArrayView> logo,
                                   const PlaylistGuideKeys &guideKeys = {},
                                   EntryTextArena *arena = nullptr);
    // UTF-16 code units before the addresses: the name, the tvg-id and a tvg-name of its own.
    qsizetype textUnits() const
    {
        return qsizetype(m_nameSize) + m_tvgIdSize + std::max<qint16>(m_tvgNameSize, 0);
    }
    qsizetype urlAt() const { return textUnits() * qsizetype(sizeof(char16_t)); }
    QStringView textAt(qsizetype at, qsizetype size) const
    {
        return QStringView(reinterpret_cast<const char16_t *>(m_texts.get()) + at, size);
    }
    QByteArrayView texts() const { return QByteArrayView(m_texts.get(), m_textsSize); }
    static bool sameLabels(const PlaylistEntry &a, const PlaylistEntry &b);
    const PlaylistLabels &labels() const;
    void setDetails(std::shared_ptr<const PlaylistLabels> labels,
                    std::shared_ptr<const ChannelOptions> options);

    // One block for the name, the tvg-id and the tvg-name (UTF-16), then both addresses, in
    // that order, never changed once written: a parsed list keeps them in shared chunks.
    QUuid m_id;
    std::shared_ptr<const char> m_texts;
    qint32 m_textsSize = 0;
    qint32 m_nameSize = 0; // in UTF-16 code units
    qint32 m_logoAt = -1; // where the logo address starts in m_texts; -1 for none
    static constexpr qint32 noShift = std::numeric_limits<qint32>::min();
    qint32 m_shiftSeconds = noShift;
    // Guide keys are short: 16 bits each keep the entry small (a longer key counts as none).
    static constexpr qsizetype maxKeySize = std::numeric_limits<qint16>::max();
    qint16 m_tvgIdSize = 0;
    // The tvg-name's size, or one of these; most lists repeat the name there.
    static constexpr qint16 noTvgName = -1;
    static constexpr qint16 tvgNameIsName = -2;
    qint16 m_tvgNameSize = noTvgName;
    // None when there are neither labels nor options. Labels are null when there is neither
    // a group nor a country; absent values are null (never empty) strings: the parser only
    // keeps non-empty groups and exactly two-character countries. Options are shared: most
    // entries have none, and those that do mostly share one set.
    std::shared_ptr<const PlaylistEntryDetails> m_details;
};

// Moved as bytes when a list of channels grows: nothing in an entry points into itself.
Q_DECLARE_TYPEINFO(PlaylistEntry, Q_RELOCATABLE_TYPE);
