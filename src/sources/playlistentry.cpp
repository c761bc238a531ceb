#include "playlistentry.h"

#include "urlparts.h"

namespace {

QString nullIfAbsent(std::optional<QString> text)
{
    return text && !text->isEmpty() ? std::move(*text) : QString();
}

std::optional<QString> absentIfNull(const QString &text)
{
    if (text.isNull())
        return std::nullopt;
    return text;
}

} // namespace

PlaylistEntry::PlaylistEntry(QUuid id, QString name, const QUrl &url,
                             const std::optional<QUrl> &logoURL, std::optional<QString> groupTitle,
                             std::optional<QString> countryCode)
    : m_id(id)
    , m_name(std::move(name))
    , m_url(UrlParts::encoded(url))
    , m_logoURL(logoURL ? UrlParts::encoded(*logoURL) : QByteArray())
    , m_groupTitle(nullIfAbsent(std::move(groupTitle)))
    , m_countryCode(nullIfAbsent(std::move(countryCode)))
{ }

PlaylistEntry PlaylistEntry::fromEncoded(QUuid id, QString name, QByteArray encodedUrl,
                                         QByteArray encodedLogoURL, QString groupTitle,
                                         QString countryCode)
{
    PlaylistEntry entry;
    entry.m_id = id;
    entry.m_name = std::move(name);
    entry.m_url = std::move(encodedUrl);
    entry.m_logoURL = encodedLogoURL.isEmpty() ? QByteArray() : std::move(encodedLogoURL);
    entry.m_groupTitle = groupTitle.isEmpty() ? QString() : std::move(groupTitle);
    entry.m_countryCode = countryCode.isEmpty() ? QString() : std::move(countryCode);
    return entry;
}

QUrl PlaylistEntry::url() const
{
    return QUrl::fromEncoded(m_url);
}

std::optional<QUrl> PlaylistEntry::logoURL() const
{
    if (m_logoURL.isNull())
        return std::nullopt;
    return QUrl::fromEncoded(m_logoURL);
}

std::optional<QString> PlaylistEntry::groupTitle() const
{
    return absentIfNull(m_groupTitle);
}

std::optional<QString> PlaylistEntry::countryCode() const
{
    return absentIfNull(m_countryCode);
}

const StreamHeaders &PlaylistEntry::headers() const
{
    static const StreamHeaders none;
    return m_headers ? *m_headers : none;
}

void PlaylistEntry::setHeaders(std::shared_ptr<const StreamHeaders> headers)
{
    m_headers = headers && !headers->isEmpty() ? std::move(headers) : nullptr;
}

size_t qHash(const PlaylistEntry &entry, size_t seed) noexcept
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, entry.m_id);
    seed = combine(seed, entry.m_name);
    seed = combine(seed, entry.m_url);
    for (const QByteArray *bytes : {&entry.m_logoURL}) {
        seed = combine(seed, !bytes->isNull());
        if (!bytes->isNull())
            seed = combine(seed, *bytes);
    }
    for (const QString *text : {&entry.m_groupTitle, &entry.m_countryCode}) {
        seed = combine(seed, !text->isNull());
        if (!text->isNull())
            seed = combine(seed, *text);
    }
    return seed;
}
