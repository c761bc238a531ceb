#include "channelindex.h"

#include <QHash>

#include <algorithm>
#include <functional>

namespace {

constexpr char16_t groupMark = u'\u0000';
constexpr char16_t endMark = u'\u0001';
constexpr int noValue = -1;
constexpr int unknownValue = -2; // a filter value that no entry has

int intern(const QString &value, QHash<QString, int> &ids, QStringList &values)
{
    const auto found = ids.constFind(value);
    if (found != ids.cend())
        return *found;
    const int id = int(values.size());
    ids.insert(value, id);
    values.append(value);
    return id;
}

int lookup(const std::optional<QString> &value, const QStringList &values)
{
    if (!value)
        return noValue;
    const qsizetype found = values.indexOf(*value);
    return found < 0 ? unknownValue : int(found);
}

} // namespace

ChannelIndex::ChannelIndex(const QList<PlaylistEntry> &playlist)
    : m_playlist(playlist)
{
    const qsizetype count = playlist.size();
    m_starts.reserve(size_t(count) + 1);
    m_country.reserve(size_t(count));
    m_category.reserve(size_t(count));
    QHash<QString, int> countryIDs;
    QHash<QString, int> groupIDs;
    QString text;
    for (const PlaylistEntry &entry : playlist) {
        m_starts.push_back(int(text.size()));
        text += entry.name();
        text += QChar(groupMark);
        const std::optional<QString> group = entry.groupTitle();
        const std::optional<QString> country = entry.countryCode();
        if (group)
            text += *group;
        text += QChar(endMark);
        m_category.push_back(group ? intern(*group, groupIDs, m_groups) : noValue);
        m_country.push_back(country ? intern(*country, countryIDs, m_countries) : noValue);
    }
    m_starts.push_back(int(text.size()));
    // Simple case folding keeps every code unit in place, so the offsets stay valid.
    m_text = text.toCaseFolded();
    Q_ASSERT(m_text.size() == text.size());

    m_countryCodes = ChannelFilters::sortedByCountryName(m_countries);
    m_categories = ChannelFilters::sortedCategories(m_groups);
}

bool ChannelIndex::passesMenus(int row, int country, int category) const
{
    return (country == noValue || m_country[size_t(row)] == country)
        && (category == noValue || m_category[size_t(row)] == category);
}

std::vector<int> ChannelIndex::filter(const ChannelFilter &filter) const
{
    const int country = lookup(filter.countryCode, m_countries);
    const int category = lookup(filter.category, m_groups);
    if (country == unknownValue || category == unknownValue)
        return {};
    const QString query = filter.query();
    if (query.isEmpty())
        return filterByMenus(country, category);
    return filterBySearch(query, country, category);
}

std::vector<int> ChannelIndex::filterByMenus(int country, int category) const
{
    std::vector<int> rows;
    rows.reserve(m_country.size());
    for (int row = 0; row < int(m_country.size()); ++row) {
        if (passesMenus(row, country, category))
            rows.push_back(row);
    }
    return rows;
}

std::vector<int> ChannelIndex::filterBySearch(const QString &query, int country, int category) const
{
    std::vector<int> rows;
    if (query.contains(QChar(groupMark)) || query.contains(QChar(endMark))) {
        // The marks could match across fields; such a search is compared entry by entry.
        for (int row = 0; row < int(m_country.size()); ++row) {
            if (passesMenus(row, country, category)
                && ChannelFilters::matches(m_playlist.at(row), ChannelFilter(), query))
                rows.push_back(row);
        }
        return rows;
    }
    const QString folded = query.toCaseFolded();
    const std::boyer_moore_horspool_searcher searcher(folded.cbegin(), folded.cend());
    const QChar *begin = m_text.cbegin();
    const QChar *end = m_text.cend();
    const QChar *position = begin;
    size_t row = 0;
    while (position != end) {
        const QChar *hit = std::search(position, end, searcher);
        if (hit == end)
            break;
        const int offset = int(hit - begin);
        // The entry holding the hit: starts only grow, so the walk goes forward.
        row = size_t(std::upper_bound(m_starts.begin() + qsizetype(row), m_starts.end(), offset)
                     - m_starts.begin())
            - 1;
        if (passesMenus(int(row), country, category))
            rows.push_back(int(row));
        position = begin + m_starts[row + 1];
        ++row;
    }
    return rows;
}
