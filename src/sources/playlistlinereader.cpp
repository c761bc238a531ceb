#include "playlistlinereader.h"

#include "asciiprefix.h"
#include "extinfattributes.h"
#include "hugepages.h"
#include "plainaddress.h"
#include "tvgshift.h"
#include "urlparts.h"

#include <memory>
#include <utility>
#include <vector>

namespace {

// The bytes of part, a stretch of text, when text is plain ASCII and ascii holds its bytes;
// null otherwise.
QByteArrayView asciiOf(QStringView part, QStringView text, QByteArrayView ascii)
{
    if (ascii.isNull())
        return {};
    return ascii.sliced(part.data() - text.data(), part.size());
}

// The encoded form of an address, relative ones resolved against base, into a buffer reused from
// address to address; with no base (logos, which have no playlist address to be relative to)
// only absolute addresses count. baseDirectory is the base's plain folder, when it has one, and
// ascii the text's bytes when it is plain ASCII. False when the text is not an address.
bool encodeAddress(QStringView text, QByteArrayView ascii, const QUrl *base,
                   QByteArrayView baseDirectory, QByteArray &into)
{
    if (ascii.isNull() ? PlainAddress::encode(text, into) : PlainAddress::encode(ascii, into))
        return true;
    if (base
        && (ascii.isNull() ? PlainAddress::encodeRelative(text, baseDirectory, into)
                           : PlainAddress::encodeRelative(ascii, baseDirectory, into)))
        return true;
    // A line handed over as bytes only is widened when QUrl has to read it.
    const QString widened = text.isNull() ? QString::fromLatin1(ascii) : QString();
    if (text.isNull())
        text = widened;
    const std::optional<QUrl> url = base ? UrlParts::parse(text, *base) : UrlParts::parse(text);
    if (!url || (!base && url->isRelative()))
        return false;
    into = UrlParts::encoded(*url);
    return true;
}

// The name of an address listed without one: its file name without the type, else its host.
QString nameFromAddress(const QByteArray &encoded)
{
    const QUrl url = QUrl::fromEncoded(encoded);
    // "live/news%20one.ts" is listed as "news one".
    if (const std::optional<QString> component
        = UrlParts::removingPercentEncoding(UrlParts::lastPathComponent(url))) {
        QString name = UrlParts::deletingPathExtension(*component);
        if (!name.isEmpty())
            return name;
    }
    QString host = url.host(QUrl::FullyDecoded);
    if (!host.isEmpty())
        return host;
    return QStringLiteral("Stream");
}

// ascii without the spaces QStringView::trimmed() takes off: tab to carriage return, and space.
QByteArrayView trimmedAscii(QByteArrayView ascii)
{
    const auto isSpace = [](char c) {
        return c == ' ' || (c >= '\t' && c <= '\r');
    };
    qsizetype begin = 0;
    qsizetype end = ascii.size();
    while (begin < end && isSpace(ascii[begin]))
        ++begin;
    while (end > begin && isSpace(ascii[end - 1]))
        --end;
    return ascii.sliced(begin, end - begin);
}

void assignText(std::u16string &into, QStringView text)
{
    into.assign(text.utf16(), size_t(text.size()));
}

} // namespace

std::optional<QStringView> countryPieceOfTvgId(QStringView value)
{
    QStringView beforeAt = value;
    qsizetype first = 0;
    while (first < value.size() && value[first] == u'@')
        ++first;
    const qsizetype at = value.indexOf(u'@', first);
    beforeAt = value.sliced(first, (at < 0 ? value.size() : at) - first);
    if (beforeAt.isEmpty())
        beforeAt = value;

    qsizetype end = beforeAt.size();
    while (end > 0 && beforeAt[end - 1] == u'.')
        --end;
    const qsizetype dot = beforeAt.first(end).lastIndexOf(u'.');
    const QStringView last = beforeAt.sliced(dot + 1, end - dot - 1);
    if (last.isEmpty())
        return std::nullopt;
    return last;
}

std::optional<QStringView> countryPieceOfList(QStringView value)
{
    const auto isSeparator = [](QChar c) {
        return c == u',' || c == u';' || c == u' ';
    };
    qsizetype start = 0;
    while (start < value.size() && isSeparator(value[start]))
        ++start;
    qsizetype end = start;
    while (end < value.size() && !isSeparator(value[end]))
        ++end;
    if (end == start)
        return std::nullopt;
    return value.sliced(start, end - start);
}

void adviseHugePages(const QList<PlaylistEntry> &entries)
{
    adviseHugePages(entries.constData(), entries.capacity() * qsizetype(sizeof(PlaylistEntry)));
}

PlaylistLineReader::PlaylistLineReader(const QUrl &baseURL, CatchupAttributes headerCatchup)
    : m_baseURL(baseURL)
    , m_baseDirectory(PlainAddress::baseDirectory(baseURL))
    , m_headerCatchup(std::move(headerCatchup))
{ }

void PlaylistLineReader::read(QStringView untrimmed, QByteArrayView ascii)
{
    if (untrimmed.isNull() && !ascii.isEmpty()) {
        // Plain ASCII, neither blank nor a comment: an address, read as bytes.
        readAddress({}, trimmedAscii(ascii));
        return;
    }
    const QStringView line = trimmedText(untrimmed);
    if (line.isEmpty())
        return;
    if (startsWithAscii(line, u"#EXTINF:"))
        readExtinf(line, asciiOf(line, untrimmed, ascii));
    else if (startsWithAscii(line, u"#EXTVLCOPT:"))
        readVlcOption(line);
    else if (!line.startsWith(u'#'))
        readAddress(line, asciiOf(line, untrimmed, ascii));
}

void PlaylistLineReader::readExtinf(QStringView line, QByteArrayView ascii)
{
    // Everything after the first comma outside quoted values, further commas kept; the
    // whole line with no comma.
    const ExtinfAttributes attributes(line);
    // Every name in one pass over the line's values.
    enum Name {
        tvgName,
        tvgShift,
        tvgLogo,
        groupTitle,
        tvgCountry,
        country,
        tvgId,
        agent,
        referrer,
        catchup
    };
    static const ExtinfAttributes::NameSet names = [] {
        std::vector<QStringView> all {u"tvg-name",    u"tvg-shift",       u"tvg-logo",
                                      u"group-title", u"tvg-country",     u"country",
                                      u"tvg-id",      u"http-user-agent", u"http-referrer"};
        all.insert(all.end(), std::begin(CatchupAttributes::names),
                   std::end(CatchupAttributes::names));
        return ExtinfAttributes::NameSet(all.data(), qsizetype(all.size()));
    }();
    const ExtinfAttributes::Values values = attributes.values(names);
    const qsizetype comma = attributes.titleComma();
    const QStringView title = trimmedText(comma < 0 ? line : line.sliced(comma + 1));
    m_pending.clear();
    assignText(m_pending.name, title);
    if (const std::optional<QStringView> &name = values[tvgName]) {
        assignText(m_pending.tvgName, *name);
        if (title.isEmpty())
            assignText(m_pending.name, *name);
    }
    if (const std::optional<QStringView> &shift = values[tvgShift])
        m_pending.shiftSeconds = TvgShift::parseSeconds(*shift);

    if (const std::optional<QStringView> &logo = values[tvgLogo]) {
        if (!encodeAddress(*logo, asciiOf(*logo, line, ascii), nullptr, {}, m_pending.logo))
            m_pending.logo.resize(0);
    }
    if (const std::optional<QStringView> &group = values[groupTitle])
        m_pending.group = m_pool.intern(*group);

    if (const std::optional<QStringView> &code
        = values[tvgCountry] ? values[tvgCountry] : values[country]) {
        if (const std::optional<QStringView> piece = countryPieceOfList(*code))
            m_pending.country = m_pool.internCountryCode(*piece);
    }
    const std::optional<QStringView> &tvgID = values[tvgId];
    if (tvgID)
        assignText(m_pending.tvgId, *tvgID);
    if (!m_pending.country && tvgID) {
        if (const std::optional<QStringView> piece = countryPieceOfTvgId(*tvgID))
            m_pending.country = m_pool.internCountryCode(*piece);
    }

    m_pendingCatchup = CatchupAttributes::fromValues(values.constData() + catchup);

    if (const std::optional<QStringView> &userAgent = values[agent])
        m_pendingHeaders.userAgent = m_pool.internHeaderValue(*userAgent);
    if (const std::optional<QStringView> &referrerValue = values[referrer])
        m_pendingHeaders.referrer = m_pool.internHeaderValue(*referrerValue);
}

// "#EXTVLCOPT:name=value": VLC's options for the next address. Only the request headers
// matter to playing; they hold until that address, whether given before or after #EXTINF.
void PlaylistLineReader::readVlcOption(QStringView line)
{
    const QStringView option = line.sliced(QStringView(u"#EXTVLCOPT:").size());
    const qsizetype equals = option.indexOf(u'=');
    if (equals < 0)
        return;
    const QStringView name = option.first(equals).trimmed();
    const QString value = m_pool.internHeaderValue(option.sliced(equals + 1));
    if (value.isEmpty())
        return;
    if (name.compare(u"http-user-agent", Qt::CaseInsensitive) == 0)
        m_pendingHeaders.userAgent = value;
    else if (name.compare(u"http-referrer", Qt::CaseInsensitive) == 0)
        m_pendingHeaders.referrer = value;
}

void PlaylistLineReader::readAddress(QStringView line, QByteArrayView ascii)
{
    if (!encodeAddress(line, ascii, &m_baseURL, m_baseDirectory, m_address))
        return; // keep the pending information for the next address line

    const QString nameOfAddress = m_pending.name.empty() ? nameFromAddress(m_address) : QString();
    ChannelOptions options {std::exchange(m_pendingHeaders, {}),
                            CatchupAttributes::resolve(m_pendingCatchup, m_headerCatchup)};
    m_pendingCatchup = {};
    std::shared_ptr<const PlaylistEntryDetails> details
        = m_labels.labels(m_pending.group, m_pending.country);
    if (!options.isEmpty())
        details = m_labels.withOptions(details, m_options.shared(std::move(options)));
    const qsizetype capacity = m_entries.capacity();
    m_entries.append(PlaylistEntry::fromEncoded(
        m_uuids.next(),
        m_pending.name.empty() ? QStringView(nameOfAddress) : QStringView(m_pending.name),
        m_address, m_pending.logo, std::move(details),
        {m_pending.tvgId, m_pending.tvgName, m_pending.shiftSeconds}, &m_arena));
    if (m_entries.capacity() != capacity)
        adviseHugePages(m_entries);
    m_pending.clear();
}

void PlaylistLineReader::startPart()
{
    m_pending.clear();
    m_pendingHeaders = {};
    m_pendingCatchup = {};
}

void PlaylistLineReader::moveEntriesTo(PlaylistEntry *slots)
{
    std::uninitialized_move(m_entries.begin(), m_entries.end(), slots);
    m_entries.clear();
}

void PlaylistLineReader::expect(qsizetype entries)
{
    m_entries.reserve(entries);
    adviseHugePages(m_entries);
}
