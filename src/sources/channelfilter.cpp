#include "channelfilter.h"

#include <QCollator>
#include <QHash>
#include <QLocale>
#include <QSet>

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <mutex>

namespace ChannelFilters {

namespace {

QString icuCountryName(const QString &code)
{
    const QByteArray latin = code.toUtf8();
    const icu::Locale region("", latin.constData());
    icu::UnicodeString name;
    region.getDisplayCountry(icu::Locale("en", "US"), name);
    return QString::fromUtf16(reinterpret_cast<const char16_t *>(name.getBuffer()), name.length());
}

QCollator caseInsensitiveCollator()
{
    // The user's locale; without one (the C locale) code points would put "Côte d'Ivoire"
    // after "Czechia": the names are English, so English rules then.
    QLocale locale;
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English, QLocale::UnitedStates);
    QCollator collator(locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

} // namespace

QString countryName(const QString &code)
{
    // Rows ask for the same few hundred codes again and again while painting, and the loader's
    // threads ask while they build search indexes: the cache is shared, so guarded. It keeps
    // at most a few thousand names, so that a list of made-up codes cannot grow it forever.
    constexpr qsizetype maximumNames = 4096;
    static std::mutex lock;
    static QHash<QString, QString> names;
    {
        const std::lock_guard guard(lock);
        const auto found = names.constFind(code);
        if (found != names.cend())
            return *found;
    }
    QString name = icuCountryName(code);
    if (name.isEmpty())
        name = code;
    const std::lock_guard guard(lock);
    if (names.size() < maximumNames)
        names.insert(code, name);
    return name;
}

QString countryName(const std::optional<QString> &code)
{
    return code ? countryName(*code) : otherCountry.toString();
}

QString metadata(const QString &countryName, const std::optional<QString> &groupTitle)
{
    if (!groupTitle || groupTitle->isEmpty())
        return countryName;
    if (countryName == otherCountry)
        return *groupTitle;
    return countryName + separator.toString() + *groupTitle;
}

bool matches(const PlaylistEntry &entry, const ChannelFilter &filter, const QString &query)
{
    if (filter.countryCode && entry.countryCode() != filter.countryCode)
        return false;
    const std::optional<QString> group = entry.groupTitle();
    if (filter.category && group != filter.category)
        return false;
    if (query.isEmpty() || entry.nameView().contains(query, Qt::CaseInsensitive))
        return true;
    return group && group->contains(query, Qt::CaseInsensitive);
}

QList<PlaylistEntry> filtered(const QList<PlaylistEntry> &playlist, const ChannelFilter &filter)
{
    const QString query = filter.query();
    QList<PlaylistEntry> result;
    for (const PlaylistEntry &entry : playlist) {
        if (matches(entry, filter, query))
            result.append(entry);
    }
    return result;
}

QStringList sortedByCountryName(QStringList codes)
{
    // Sorted by code first so that codes sharing a name keep a stable order.
    std::sort(codes.begin(), codes.end());
    const QCollator collator = caseInsensitiveCollator();
    std::stable_sort(codes.begin(), codes.end(), [&](const QString &a, const QString &b) {
        return collator.compare(countryName(a), countryName(b)) < 0;
    });
    return codes;
}

QStringList sortedCategories(QStringList titles)
{
    titles.removeAll(QString());
    std::sort(titles.begin(), titles.end());
    const QCollator collator = caseInsensitiveCollator();
    std::stable_sort(titles.begin(), titles.end(), [&](const QString &a, const QString &b) {
        return collator.compare(a, b) < 0;
    });
    return titles;
}

QStringList countryCodes(const QList<PlaylistEntry> &playlist)
{
    QSet<QString> distinct;
    for (const PlaylistEntry &entry : playlist) {
        if (std::optional<QString> code = entry.countryCode())
            distinct.insert(*code);
    }
    return sortedByCountryName(QStringList(distinct.cbegin(), distinct.cend()));
}

QStringList categories(const QList<PlaylistEntry> &playlist)
{
    QSet<QString> distinct;
    for (const PlaylistEntry &entry : playlist) {
        if (std::optional<QString> group = entry.groupTitle())
            distinct.insert(*group);
    }
    return sortedCategories(QStringList(distinct.cbegin(), distinct.cend()));
}

QString header(qsizetype shown, qsizetype total)
{
    return QStringLiteral("IPTV CHANNELS") + separator.toString() + QString::number(shown)
        + QStringLiteral(" / ") + QString::number(total);
}

} // namespace ChannelFilters
