#pragma once
// A playlist prepared for filtering as the user types: names and groups folded once into one
// text, countries and categories as small numbers. Filtering 200,000 channels then takes a
// single pass of a string search instead of one case-insensitive comparison per channel.
#include "channelfilter.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <stop_token>
#include <vector>

class ChannelIndex
{
public:
    ChannelIndex() = default;
    explicit ChannelIndex(const QList<PlaylistEntry> &playlist);
    // The same, built where it may be given up: null once stop is requested, which is checked
    // every few thousand entries.
    static std::shared_ptr<const ChannelIndex> build(const QList<PlaylistEntry> &playlist,
                                                     std::stop_token stop);

    qsizetype size() const { return qsizetype(m_country.size()); }
    const QList<PlaylistEntry> &playlist() const { return m_playlist; }
    // The playlist positions of the entries passing filter, in playlist order; the same
    // entries as ChannelFilters::filtered.
    std::vector<int> filter(const ChannelFilter &filter) const;
    // The same as filter(narrower), given the rows of an earlier filter known to hold them all
    // (same menus, a search that the new one contains): only those rows are searched again.
    std::vector<int> narrow(const std::vector<int> &rows, const ChannelFilter &narrower) const;

    // The menus' items, as ChannelFilters::countryCodes and ChannelFilters::categories.
    const QStringList &countryCodes() const { return m_countryCodes; }
    const QStringList &categories() const { return m_categories; }

private:
    // False when stopped before the end; the index is then incomplete.
    bool index(const std::stop_token &stop);
    bool passesMenus(int row, int country, int category) const;
    std::vector<int> filterByMenus(int country, int category) const;
    std::vector<int> filterBySearch(const QString &query, int country, int category) const;

    QList<PlaylistEntry> m_playlist;
    // Per entry: folded name, a separator, folded group, an end mark; m_starts[i] is where
    // entry i begins and m_starts[size()] the end.
    QString m_text;
    std::vector<int> m_starts;
    // Per entry: index into m_countries / m_groups, or -1 when absent.
    std::vector<int> m_country;
    std::vector<int> m_category;
    QStringList m_countries; // in first-seen order
    QStringList m_groups; // in first-seen order, empty titles included
    QStringList m_countryCodes;
    QStringList m_categories;
};
