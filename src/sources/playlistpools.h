#pragma once
// What the entries of a parsed list share rather than copy (groups, countries, header values,
// options), and where their identifiers come from. One set per parse, used by one thread.
#include "channeloptions.h"
#include "playlistentry.h"

#include <QHash>
#include <QRandomGenerator>
#include <QString>
#include <QUuid>

#include <array>
#include <deque>
#include <memory>
#include <optional>

// piece upper-cased, when it is two user-perceived characters: a country code.
std::optional<QString> twoCharacterCode(QStringView piece);

// Shares one copy of texts that repeat across a playlist (groups, countries, header values).
// The copies stay where they are while the pool lives: a parser holds on to them by address,
// which costs none of the atomic counting that copies of a QString do.
class TextPool
{
public:
    // The pool's copy of text; null for an empty text.
    const QString *intern(QStringView text);
    // The pool's copy of twoCharacterCode(piece), or null.
    const QString *internCountryCode(QStringView piece);
    // A request header's value as a playlist gives it, without control characters: a NUL, CR or
    // LF would cut or split the request, the others have no place in a header. Null when
    // nothing is left.
    QString internHeaderValue(QStringView value);

private:
    std::deque<QString> m_stored; // never moved: keys view them, and parsers point at them
    QHash<QStringView, const QString *> m_texts;
    std::array<const QString *, 61> m_recent {};
    QString m_cleaned; // reused from value to value
};

// Shares one PlaylistEntryDetails among the entries with the same group, country and options.
// The texts come from a TextPool, so equal texts are the same string and are told apart by
// where they are.
class LabelsPool
{
public:
    // Details with labels and no options, or null when both texts are; group and country come
    // from a TextPool, and either may be null.
    std::shared_ptr<const PlaylistEntryDetails> labels(const QString *group,
                                                       const QString *country);
    // The same labels (from labels()) with options, shared with recent entries that had both;
    // options unique to a channel, as a catch-up source may be, are not kept for later.
    std::shared_ptr<const PlaylistEntryDetails>
    withOptions(const std::shared_ptr<const PlaylistEntryDetails> &labels,
                std::shared_ptr<const ChannelOptions> options);

private:
    using Key = std::pair<const void *, const void *>;
    QHash<Key, std::shared_ptr<const PlaylistEntryDetails>> m_labels;
    struct Recent
    {
        Key key;
        std::shared_ptr<const PlaylistEntryDetails> details;
    };
    std::array<Recent, 251> m_recent; // room for every group in every country of most lists
    std::array<Recent, 61> m_recentWithOptions;
};

// Shares one ChannelOptions among the entries that have the same. Provider lists repeat a few
// sets in turn (a catch-up kind per server), so the last few distinct sets are looked up; a set
// not seen for a while gets a copy of its own, which keeps lists of unique sets cheap.
class OptionsPool
{
public:
    std::shared_ptr<const ChannelOptions> shared(ChannelOptions options);

private:
    std::array<std::shared_ptr<const ChannelOptions>, 8> m_recent; // the latest first
};

// Fresh random identifiers: one generator, seeded from the system once per playlist, rather
// than a system call per entry.
class UuidSource
{
public:
    UuidSource();
    QUuid next();

private:
    QRandomGenerator m_generator;
};
