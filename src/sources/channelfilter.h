#pragma once
// What the channel list shows: the search and the two menus' filters, the menus' items, country
// names and the line under each channel's name. Plain rules over a playlist, no views.
#include "sources/playlistentry.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

struct ChannelFilter
{
    QString search;
    std::optional<QString> countryCode; // none: every country
    std::optional<QString> category; // none: every category

    // The search text without surrounding whitespace and line breaks.
    QString query() const { return search.trimmed(); }
    friend bool operator==(const ChannelFilter &, const ChannelFilter &) = default;
};

namespace ChannelFilters {

inline constexpr QStringView otherCountry = u"Other";
inline constexpr QStringView separator = u"  \u00b7  ";

// The English (United States) name of a region code, or the code itself when there is none.
QString countryName(const QString &code);
// "Other" for an entry without a country.
QString countryName(const std::optional<QString> &code);
// The line under a channel's name: its country and group.
QString metadata(const QString &countryName, const std::optional<QString> &groupTitle);

// Whether an entry passes the filter; query is filter.query(), computed once by the caller.
bool matches(const PlaylistEntry &entry, const ChannelFilter &filter, const QString &query);
// The entries passing the filter, in playlist order.
QList<PlaylistEntry> filtered(const QList<PlaylistEntry> &playlist, const ChannelFilter &filter);

// Distinct codes sorted by country name; distinct titles sorted, without the empty one. Both
// compare case-insensitively in the user's locale.
QStringList sortedByCountryName(QStringList codes);
QStringList sortedCategories(QStringList titles);

// The distinct country codes, sorted by country name (case-insensitive, the user's locale).
QStringList countryCodes(const QList<PlaylistEntry> &playlist);
// The distinct non-empty group titles, sorted (case-insensitive, the user's locale).
QStringList categories(const QList<PlaylistEntry> &playlist);

// The header above the list: "IPTV CHANNELS  ·  shown / total".
QString header(qsizetype shown, qsizetype total);

} // namespace ChannelFilters
