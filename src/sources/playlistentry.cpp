#include "playlistentry.h"

#include "urlparts.h"

#include <cstring>

namespace {

QString nullIfAbsent(std::optional<QString> text)
{
    return text && !text->isEmpty() ? std::move(*text) : QString();
}

std::shared_ptr<const PlaylistLabels> labelsOrNone(std::shared_ptr<const PlaylistLabels> labels)
{
    if (!labels || (labels->groupTitle.isNull() && labels->countryCode.isNull()))
        return nullptr;
    return labels;
}

const PlaylistLabels &noLabels()
{
    static const PlaylistLabels none;
    return none;
}

QUrl urlFromEncoded(QByteArrayView encoded)
{
    return QUrl::fromEncoded(QByteArray::fromRawData(encoded.data(), encoded.size()));
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
    : PlaylistEntry(withTexts(id, name, UrlParts::encoded(url),
                              logoURL ? std::optional<QByteArrayView>(UrlParts::encoded(*logoURL))
                                      : std::nullopt))
{
    setDetails(std::make_shared<const PlaylistLabels>(PlaylistLabels {
                   nullIfAbsent(std::move(groupTitle)), nullIfAbsent(std::move(countryCode))}),
               nullptr);
}

PlaylistEntry PlaylistEntry::fromEncoded(QUuid id, QStringView name, QByteArrayView encodedUrl,
                                         QByteArrayView encodedLogoURL,
                                         std::shared_ptr<const PlaylistLabels> labels,
                                         const PlaylistGuideKeys &guideKeys, EntryTextArena *arena)
{
    PlaylistEntry entry
        = fromEncoded(id, name, encodedUrl, encodedLogoURL,
                      std::shared_ptr<const PlaylistEntryDetails>(), guideKeys, arena);
    entry.setDetails(std::move(labels), nullptr);
    return entry;
}

PlaylistEntry PlaylistEntry::fromEncoded(QUuid id, QStringView name, QByteArrayView encodedUrl,
                                         QByteArrayView encodedLogoURL,
                                         std::shared_ptr<const PlaylistEntryDetails> details,
                                         const PlaylistGuideKeys &guideKeys, EntryTextArena *arena)
{
    PlaylistEntry entry = withTexts(
        id, name, encodedUrl,
        encodedLogoURL.isEmpty() ? std::nullopt : std::optional<QByteArrayView>(encodedLogoURL),
        guideKeys, arena);
    entry.m_details = std::move(details);
    return entry;
}

const PlaylistLabels &PlaylistEntry::labels() const
{
    return m_details && m_details->labels ? *m_details->labels : noLabels();
}

void PlaylistEntry::setDetails(std::shared_ptr<const PlaylistLabels> labels,
                               std::shared_ptr<const ChannelOptions> options)
{
    labels = labelsOrNone(std::move(labels));
    if (options && options->isEmpty())
        options = nullptr;
    m_details = labels || options ? std::make_shared<const PlaylistEntryDetails>(
                    PlaylistEntryDetails {std::move(labels), std::move(options)})
                                  : nullptr;
}

PlaylistEntry PlaylistEntry::withTexts(QUuid id, QStringView name, QByteArrayView url,
                                       std::optional<QByteArrayView> logo,
                                       const PlaylistGuideKeys &guideKeys, EntryTextArena *arena)
{
    PlaylistEntry entry;
    entry.m_id = id;
    entry.m_nameSize = qint32(name.size());
    const QStringView tvgId
        = guideKeys.tvgId.size() <= maxKeySize ? guideKeys.tvgId : QStringView();
    entry.m_tvgIdSize = qint16(tvgId.size());
    QStringView ownTvgName;
    if (guideKeys.tvgName.isEmpty() || guideKeys.tvgName.size() > maxKeySize) {
        entry.m_tvgNameSize = noTvgName;
    } else if (guideKeys.tvgName == name) {
        entry.m_tvgNameSize = tvgNameIsName;
    } else {
        ownTvgName = guideKeys.tvgName;
        entry.m_tvgNameSize = qint16(ownTvgName.size());
    }
    if (guideKeys.shiftSeconds)
        entry.m_shiftSeconds = *guideKeys.shiftSeconds;
    const qsizetype textBytes = entry.urlAt();
    const qsizetype size = textBytes + url.size() + (logo ? logo->size() : 0);
    std::shared_ptr<char> block
        = arena ? arena->allocate(size) : EntryTextArena::allocateAlone(size);
    char *const start = block.get();
    char *out = start;
    for (const QStringView text : {name, tvgId, ownTvgName}) {
        const auto bytes = size_t(text.size()) * sizeof(char16_t);
        if (bytes)
            std::memcpy(out, text.utf16(), bytes);
        out += bytes;
    }
    std::memcpy(start + textBytes, url.data(), size_t(url.size()));
    if (logo) {
        entry.m_logoAt = qint32(textBytes + url.size());
        std::memcpy(start + entry.m_logoAt, logo->data(), size_t(logo->size()));
    }
    entry.m_texts = std::move(block);
    entry.m_textsSize = qint32(size);
    return entry;
}

QByteArrayView PlaylistEntry::encodedUrl() const
{
    const qsizetype end = m_logoAt >= 0 ? m_logoAt : m_textsSize;
    return texts().sliced(urlAt(), end - urlAt());
}

QByteArrayView PlaylistEntry::encodedLogoURL() const
{
    if (m_logoAt < 0)
        return {};
    return texts().sliced(m_logoAt);
}

QUrl PlaylistEntry::url() const
{
    return urlFromEncoded(encodedUrl());
}

std::optional<QUrl> PlaylistEntry::logoURL() const
{
    if (m_logoAt < 0)
        return std::nullopt;
    return urlFromEncoded(encodedLogoURL());
}

std::optional<QString> PlaylistEntry::groupTitle() const
{
    return absentIfNull(labels().groupTitle);
}

std::optional<QString> PlaylistEntry::countryCode() const
{
    return absentIfNull(labels().countryCode);
}

bool PlaylistEntry::sameLabels(const PlaylistEntry &a, const PlaylistEntry &b)
{
    const PlaylistLabels &first = a.labels();
    const PlaylistLabels &second = b.labels();
    if (&first == &second)
        return true;
    return first.groupTitle == second.groupTitle && first.countryCode == second.countryCode;
}

QStringView PlaylistEntry::tvgName() const
{
    if (m_tvgNameSize == tvgNameIsName)
        return nameView();
    if (m_tvgNameSize == noTvgName)
        return {};
    return textAt(qsizetype(m_nameSize) + m_tvgIdSize, m_tvgNameSize);
}

std::optional<qint32> PlaylistEntry::tvgShiftSeconds() const
{
    if (m_shiftSeconds == noShift)
        return std::nullopt;
    return m_shiftSeconds;
}

const StreamHeaders &PlaylistEntry::headers() const
{
    static const StreamHeaders none;
    return m_details && m_details->options ? m_details->options->headers : none;
}

const std::optional<CatchupSettings> &PlaylistEntry::catchup() const
{
    static const std::optional<CatchupSettings> none;
    return m_details && m_details->options ? m_details->options->catchup : none;
}

void PlaylistEntry::setOptions(std::shared_ptr<const ChannelOptions> options)
{
    setDetails(m_details ? m_details->labels : nullptr, std::move(options));
}

size_t qHash(const PlaylistEntry &entry, size_t seed) noexcept
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, entry.m_id);
    seed = combine(seed, entry.texts());
    seed = combine(seed, entry.m_nameSize);
    seed = combine(seed, entry.m_logoAt);
    seed = combine(seed, entry.m_tvgIdSize);
    seed = combine(seed, entry.m_tvgNameSize);
    seed = combine(seed, entry.m_shiftSeconds);
    const PlaylistLabels &labels = entry.labels();
    for (const QString *text : {&labels.groupTitle, &labels.countryCode}) {
        seed = combine(seed, !text->isNull());
        if (!text->isNull())
            seed = combine(seed, *text);
    }
    return seed;
}
