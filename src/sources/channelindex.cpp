#include "channelindex.h"

#include <QHash>

namespace {

constexpr char16_t groupMark = u'\u0000';
constexpr char16_t endMark = u'\u0001';
constexpr int noValue = -1;
constexpr int unknownValue = -2; // a filter value that no entry has

// The marks could match across fields; a search holding one is compared entry by entry.
bool holdsMarks(const QString &query)
{
    return query.contains(QChar(groupMark)) || query.contains(QChar(endMark));
}

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

// Writes text case-folded, one code unit for one; simple folding never changes the length.
char16_t *foldInto(QStringView text, char16_t *out)
{
    const char16_t *in = text.utf16();
    const char16_t *const end = in + text.size();
    while (in != end) {
        const char16_t c = *in++;
        if (c < 0x80) {
            *out++ = (c >= u'A' && c <= u'Z') ? char16_t(c + 32) : c;
        } else if (QChar::isHighSurrogate(c) && in != end && QChar::isLowSurrogate(*in)) {
            const char32_t folded = QChar::toCaseFolded(QChar::surrogateToUcs4(c, *in++));
            *out++ = QChar::highSurrogate(folded);
            *out++ = QChar::lowSurrogate(folded);
        } else {
            *out++ = char16_t(QChar::toCaseFolded(char32_t(c)));
        }
    }
    return out;
}

} // namespace

ChannelIndex::ChannelIndex(const QList<PlaylistEntry> &playlist)
    : m_playlist(playlist)
{
    index({});
}

std::shared_ptr<const ChannelIndex> ChannelIndex::build(const QList<PlaylistEntry> &playlist,
                                                        std::stop_token stop)
{
    auto built = std::make_shared<ChannelIndex>();
    built->m_playlist = playlist;
    if (!built->index(stop))
        return nullptr;
    return built;
}

bool ChannelIndex::index(const std::stop_token &stop)
{
    constexpr qsizetype checkEvery = 4096;
    const QList<PlaylistEntry> &playlist = m_playlist;
    const qsizetype count = playlist.size();
    m_starts.reserve(size_t(count) + 1);
    m_country.reserve(size_t(count));
    m_category.reserve(size_t(count));
    QHash<QString, int> countryIDs;
    QHash<QString, int> groupIDs;
    qsizetype length = 0;
    for (qsizetype row = 0; row < count; ++row) {
        if (row % checkEvery == 0 && stop.stop_requested())
            return false;
        const PlaylistEntry &entry = playlist.at(row);
        const std::optional<QString> group = entry.groupTitle();
        const std::optional<QString> country = entry.countryCode();
        length += entry.nameView().size() + (group ? group->size() : 0) + 2;
        m_category.push_back(group ? intern(*group, groupIDs, m_groups) : noValue);
        m_country.push_back(country ? intern(*country, countryIDs, m_countries) : noValue);
    }
    // One text, folded as it is written: far cheaper than joining and folding a copy.
    m_text.resize(length);
    char16_t *out = reinterpret_cast<char16_t *>(m_text.data());
    const char16_t *const begin = out;
    for (int row = 0; row < int(count); ++row) {
        if (row % checkEvery == 0 && stop.stop_requested())
            return false;
        const PlaylistEntry &entry = playlist.at(row);
        m_starts.push_back(int(out - begin));
        out = foldInto(entry.nameView(), out);
        *out++ = groupMark;
        if (const int category = m_category[size_t(row)]; category >= 0)
            out = foldInto(m_groups.at(category), out);
        *out++ = endMark;
    }
    m_starts.push_back(int(out - begin));
    Q_ASSERT(out - begin == length);

    // Sorting the menus reads the process's country-name cache, which a build given up at
    // quitting must leave alone.
    if (stop.stop_requested())
        return false;
    m_countryCodes = ChannelFilters::sortedByCountryName(m_countries);
    m_categories = ChannelFilters::sortedCategories(m_groups);
    return true;
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
    if (holdsMarks(query)) {
        for (int row = 0; row < int(m_country.size()); ++row) {
            if (passesMenus(row, country, category)
                && ChannelFilters::matches(m_playlist.at(row), ChannelFilter(), query))
                rows.push_back(row);
        }
        return rows;
    }
    const QString folded = query.toCaseFolded();
    const QStringView text(m_text);
    qsizetype from = 0;
    size_t row = 0;
    const size_t count = m_country.size();
    while (row < count) {
        const qsizetype hit = text.indexOf(folded, from);
        if (hit < 0)
            break;
        // The entry holding the hit: hits only move forward, and so does the walk.
        while (m_starts[row + 1] <= hit)
            ++row;
        if (passesMenus(int(row), country, category))
            rows.push_back(int(row));
        ++row;
        from = m_starts[row];
    }
    return rows;
}

std::vector<int> ChannelIndex::narrow(const std::vector<int> &rows,
                                      const ChannelFilter &narrower) const
{
    const QString query = narrower.query();
    if (holdsMarks(query))
        return filter(narrower);
    const QString folded = query.toCaseFolded();
    const QStringView text(m_text);
    std::vector<int> result;
    for (int row : rows) {
        const qsizetype start = m_starts[size_t(row)];
        const QStringView entry = text.sliced(start, m_starts[size_t(row) + 1] - start);
        if (entry.contains(folded))
            result.push_back(row);
    }
    return result;
}
