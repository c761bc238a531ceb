#include "playlistparser.h"

#include "asciiprefix.h"
#include "extinfattributes.h"
#include "hugepages.h"
#include "plainaddress.h"
#include "playlistheader.h"
#include "playlistlines.h"
#include "playlistpools.h"
#include "tvgshift.h"
#include "urlparts.h"

#include <QVarLengthArray>

#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// The last non-empty dot-separated piece of a tvg-id such as "cnn.us" or "One.uk@SD", before the
// first "@" (leading "@"s skipped).
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

// The first piece of a list such as "us;ca" or "de, at".
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

// What an #EXTINF line says about the next address. The texts keep their buffers from entry to
// entry: a huge list then allocates nothing here.
struct PendingInfo
{
    // Standard strings: emptied and refilled inline, as every entry does several times.
    std::u16string name;
    QByteArray logo;
    const QString *group = nullptr; // in the parser's TextPool, which outlives it
    const QString *country = nullptr;
    std::u16string tvgId;
    std::u16string tvgName;
    std::optional<qint32> shiftSeconds;

    void clear()
    {
        name.clear();
        if (!logo.isEmpty())
            logo.resize(0);
        group = nullptr;
        country = nullptr;
        tvgId.clear();
        tvgName.clear();
        shiftSeconds.reset();
    }
};

void assignText(std::u16string &into, QStringView text)
{
    into.assign(text.utf16(), size_t(text.size()));
}

// The memory of a huge list's entries is all new: it is asked for in huge pages.
void adviseHugePages(const QList<PlaylistEntry> &entries)
{
    adviseHugePages(entries.constData(), entries.capacity() * qsizetype(sizeof(PlaylistEntry)));
}

// About how many entries a list of size characters holds, guessed from its start (text): every
// entry takes at least one line. Room for them is reserved before the first entry, so that
// nothing is copied as the list grows; spare room is address space that is never touched, and
// a list that beats the guess grows as lists do.
template<typename Text>
qsizetype expectedEntries(Text text, qsizetype size)
{
    constexpr qsizetype sampleSize = 64 << 10;
    constexpr qsizetype mostExpected = 4 << 20;
    const Text sample = text.first(std::min(text.size(), sampleSize));
    const qsizetype lines = sample.count(u'\n') + 1;
    const double perCharacter = double(lines) / double(std::max<qsizetype>(sample.size(), 1));
    return std::min(mostExpected, qsizetype(perCharacter * double(size) * 1.1) + 16);
}

QList<PlaylistEntry> joined(QList<PlaylistEntry> first, QList<PlaylistEntry> &&second)
{
    first.reserve(first.size() + second.size());
    adviseHugePages(first);
    first.append(std::move(second));
    return first;
}

class Parser
{
public:
    Parser(const QUrl &baseURL, CatchupAttributes headerCatchup)
        : m_baseURL(baseURL)
        , m_baseDirectory(PlainAddress::baseDirectory(baseURL))
        , m_headerCatchup(std::move(headerCatchup))
    { }

    void readExtinf(QStringView line, QByteArrayView ascii)
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
    void readVlcOption(QStringView line)
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

    void readAddress(QStringView line, QByteArrayView ascii)
    {
        if (!encodeAddress(line, ascii, &m_baseURL, m_baseDirectory, m_address))
            return; // keep the pending information for the next address line

        const QString nameOfAddress
            = m_pending.name.empty() ? nameFromAddress(m_address) : QString();
        const qsizetype capacity = m_entries.capacity();
        m_entries.append(PlaylistEntry::fromEncoded(
            m_uuids.next(),
            m_pending.name.empty() ? QStringView(nameOfAddress) : QStringView(m_pending.name),
            m_address, m_pending.logo, m_labels.labels(m_pending.group, m_pending.country),
            {m_pending.tvgId, m_pending.tvgName, m_pending.shiftSeconds}, &m_arena));
        if (m_entries.capacity() != capacity)
            adviseHugePages(m_entries);
        m_pending.clear();
        ChannelOptions options {std::exchange(m_pendingHeaders, {}),
                                CatchupAttributes::resolve(m_pendingCatchup, m_headerCatchup)};
        if (!options.isEmpty())
            m_entries.last().setOptions(m_options.shared(std::move(options)));
        m_pendingCatchup = {};
    }

    // Forgets what was pending, before a part of a list that begins with an #EXTINF line.
    void startPart()
    {
        m_pending.clear();
        m_pendingHeaders = {};
        m_pendingCatchup = {};
    }

    qsizetype size() const { return m_entries.size(); }

    void expect(qsizetype entries)
    {
        m_entries.reserve(entries);
        adviseHugePages(m_entries);
    }

    // Not squeezed: squeezing copies every entry into new memory, while the spare capacity of a
    // big list is address space the process never touches.
    QList<PlaylistEntry> take() { return std::move(m_entries); }

private:
    QUrl m_baseURL;
    QByteArray m_baseDirectory; // relative addresses are resolved without QUrl against it
    PendingInfo m_pending;
    QByteArray m_address; // reused from line to line
    StreamHeaders m_pendingHeaders;
    CatchupAttributes m_pendingCatchup;
    CatchupAttributes m_headerCatchup; // the #EXTM3U line's, which an entry's own replace
    OptionsPool m_options;
    TextPool m_pool; // before m_labels, whose keys point into it
    LabelsPool m_labels;
    EntryTextArena m_arena;
    UuidSource m_uuids;
    QList<PlaylistEntry> m_entries;
};

} // namespace

namespace {

// What every part of a list is read with.
struct ParseContext
{
    QUrl baseURL;
    CatchupAttributes headerCatchup;
};

// ascii: the line's bytes when it is plain ASCII, else null.
void parseLine(Parser &parser, QStringView untrimmed, QByteArrayView ascii = {})
{
    const QStringView line = trimmedText(untrimmed);
    if (line.isEmpty())
        return;
    if (startsWithAscii(line, u"#EXTINF:"))
        parser.readExtinf(line, asciiOf(line, untrimmed, ascii));
    else if (startsWithAscii(line, u"#EXTVLCOPT:"))
        parser.readVlcOption(line);
    else if (!line.startsWith(u'#'))
        parser.readAddress(line, asciiOf(line, untrimmed, ascii));
}

void parseLines(Parser &parser, QStringView text)
{
    const char16_t *const data = text.utf16();
    const qsizetype size = text.size();
    qsizetype start = 0;
    while (start < size) {
        qsizetype end = start;
        while (end < size && !PlaylistLines::isLineBreak(data[end]))
            ++end;
        parseLine(parser, text.sliced(start, end - start));
        start = end + 1;
    }
}

// The byte where the first #EXTINF line after position from that directly follows an address
// line begins a piece, or -1; see extinfLineAfter.
qsizetype extinfPieceAfter(QByteArrayView bytes, PlaylistLines::Encoding encoding, qsizetype from)
{
    qsizetype start = from;
    while (start < bytes.size() && !PlaylistLines::isAsciiLineBreak(uchar(bytes[start])))
        ++start;
    if (++start >= bytes.size())
        return -1;
    bool afterAddress = false;
    qsizetype found = -1;
    PlaylistLines::walk(
        bytes.sliced(start), encoding,
        [&](QStringView untrimmed, QByteArrayView, qsizetype pieceStart, bool firstInPiece) {
            const QStringView line = untrimmed.trimmed();
            if (firstInPiece && afterAddress && line.startsWith(u"#EXTINF:")) {
                found = start + pieceStart;
                return false;
            }
            if (!line.isEmpty())
                afterAddress = !line.startsWith(u'#');
            return true;
        });
    return found;
}

// Reads part of a list's bytes into the parser's entries.
PlaylistLines::Walk readPart(Parser &parser, QByteArrayView part, PlaylistLines::Encoding encoding,
                             const PlaylistParser::BytesRead &bytesRead,
                             const std::stop_token &stop)
{
    constexpr qsizetype reportEvery = 1 << 20;
    constexpr qsizetype checkStopEvery = 4096; // lines
    parser.startPart();
    qsizetype reported = 0;
    qsizetype lines = 0;
    const PlaylistLines::Walk walk = PlaylistLines::walk(
        part, encoding, [&](QStringView line, QByteArrayView ascii, qsizetype pieceStart, bool) {
            if (lines++ % checkStopEvery == 0 && stop.stop_requested())
                return false;
            // Everything before this piece is read.
            if (bytesRead && pieceStart - reported >= reportEvery) {
                bytesRead(part.sliced(reported, pieceStart - reported));
                reported = pieceStart;
            }
            parseLine(parser, line, ascii);
            return true;
        });
    if (walk == PlaylistLines::Walk::finished && bytesRead && reported < part.size())
        bytesRead(part.sliced(reported));
    return walk;
}

// Where the parts of a list begin when it is cut into about count parts that can be read apart:
// each after the first begins with an #EXTINF line that directly follows an address line.
QList<qsizetype> partStarts(QByteArrayView bytes, PlaylistLines::Encoding encoding, qsizetype count)
{
    QList<qsizetype> starts {0};
    for (qsizetype i = 1; i < count; ++i) {
        const qsizetype start
            = extinfPieceAfter(bytes, encoding, std::max(bytes.size() / count * i, starts.last()));
        if (start < 0)
            break;
        starts.append(start);
    }
    return starts;
}

// Nothing when the bytes are read as UTF-8 and are not. A large list is cut into parts, read by
// two threads at once: this one reads them from the front into the list it returns, a worker
// from the back into a list of its own. Whichever is quicker reads more (the two cores of a
// machine are seldom equally free), and the worker's entries then move behind this one's.
std::optional<QList<PlaylistEntry>>
parseBytes(QByteArrayView bytes, PlaylistLines::Encoding encoding, const ParseContext &context,
           const PlaylistParser::BytesRead &bytesRead, const std::stop_token &stop)
{
    constexpr qsizetype parallelFromBytes = 1 << 20;
    constexpr qsizetype partSize = 1 << 20;
    constexpr qsizetype mostParts = 256;
    Parser front(context.baseURL, context.headerCatchup);
    front.expect(expectedEntries(bytes, bytes.size()));
    const QList<qsizetype> starts
        = bytes.size() >= parallelFromBytes && std::thread::hardware_concurrency() > 1
        ? partStarts(bytes, encoding, std::clamp(bytes.size() / partSize, qsizetype(2), mostParts))
        : QList<qsizetype> {0};
    if (starts.size() == 1) {
        if (readPart(front, bytes, encoding, bytesRead, stop) == PlaylistLines::Walk::notUtf8)
            return std::nullopt;
        return front.take();
    }
    const auto partAt = [&](qsizetype i) {
        const qsizetype end = i + 1 < starts.size() ? starts[i + 1] : bytes.size();
        return bytes.sliced(starts[i], end - starts[i]);
    };
    std::mutex claiming;
    qsizetype nextFront = 0;
    qsizetype nextBack = starts.size() - 1;
    bool notUtf8 = false;
    // The next part to read from one end, or -1 when the two have met or reading ends.
    const auto claim = [&](bool fromFront) {
        const std::lock_guard lock(claiming);
        if (nextFront > nextBack || notUtf8 || stop.stop_requested())
            return qsizetype(-1);
        return fromFront ? nextFront++ : nextBack--;
    };
    const auto read = [&](Parser &parser, qsizetype part) {
        if (readPart(parser, partAt(part), encoding, bytesRead, stop)
            != PlaylistLines::Walk::notUtf8)
            return true;
        const std::lock_guard lock(claiming);
        notUtf8 = true;
        return false;
    };
    struct BackPart
    {
        qsizetype from; // where its entries begin in the worker's list
        qsizetype to;
    };
    std::vector<BackPart> backParts; // the last part first
    Parser back(context.baseURL, context.headerCatchup);
    std::thread worker([&] {
        back.expect(expectedEntries(bytes, bytes.size() / 2));
        for (qsizetype part; (part = claim(false)) >= 0;) {
            const qsizetype from = back.size();
            if (!read(back, part))
                return;
            backParts.push_back({from, back.size()});
        }
    });
    for (qsizetype part; (part = claim(true)) >= 0;) {
        if (!read(front, part))
            break;
    }
    worker.join();
    if (notUtf8)
        return std::nullopt;
    QList<PlaylistEntry> entries = front.take();
    QList<PlaylistEntry> backEntries = back.take();
    for (auto part = backParts.rbegin(); part != backParts.rend(); ++part) {
        std::move(backEntries.begin() + part->from, backEntries.begin() + part->to,
                  std::back_inserter(entries));
    }
    return entries;
}

// The start of the first #EXTINF line after position from that directly follows an address
// line, or -1. An #EXTINF line replaces the pending record, and request headers given before
// it (#EXTVLCOPT) come after the last address, so the text can be parsed in two parts there.
qsizetype extinfLineAfter(QStringView text, qsizetype from)
{
    const char16_t *const data = text.utf16();
    qsizetype start = from;
    while (start < text.size() && !PlaylistLines::isLineBreak(data[start]))
        ++start;
    bool afterAddress = false;
    while (++start < text.size()) {
        qsizetype end = start;
        while (end < text.size() && !PlaylistLines::isLineBreak(data[end]))
            ++end;
        const QStringView line = text.sliced(start, end - start).trimmed();
        if (line.startsWith(u"#EXTINF:") && afterAddress)
            return start;
        if (!line.isEmpty())
            afterAddress = !line.startsWith(u'#');
        start = end;
    }
    return -1;
}

QList<PlaylistEntry> parsePart(QStringView text, const ParseContext &context, qsizetype expected)
{
    Parser parser(context.baseURL, context.headerCatchup);
    parser.expect(expected);
    parseLines(parser, text);
    return parser.take();
}

} // namespace

QList<PlaylistEntry> PlaylistParser::parse(QStringView text, const QUrl &baseURL)
{
    const ParseContext context {baseURL, PlaylistHeader::read(text, baseURL).catchup};
    // Large lists are read in two halves at once; small ones are not worth a thread.
    constexpr qsizetype parallelFromCharacters = 1 << 20;
    if (text.size() >= parallelFromCharacters && std::thread::hardware_concurrency() > 1) {
        const qsizetype split = extinfLineAfter(text, text.size() / 2);
        if (split > 0) {
            QList<PlaylistEntry> second;
            const QStringView secondText = text.sliced(split);
            std::thread worker([&] {
                second = parsePart(secondText, context,
                                   expectedEntries(secondText, secondText.size()));
            });
            QList<PlaylistEntry> first
                = parsePart(text.first(split), context, expectedEntries(text, text.size()));
            worker.join();
            return joined(std::move(first), std::move(second));
        }
    }
    return parsePart(text, context, expectedEntries(text, text.size()));
}

QList<PlaylistEntry> PlaylistParser::parse(QByteArrayView bytes, const QUrl &baseURL,
                                           const BytesRead &bytesRead, const std::stop_token &stop)
{
    // The UTF-8 mark is no text, and a Latin-1 reading drops it too (see decodePlaylistText).
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        if (bytesRead)
            bytesRead(bytes.first(3));
        bytes = bytes.sliced(3);
    }
    const ParseContext context {baseURL, PlaylistHeader::read(bytes, baseURL).catchup};
    if (std::optional<QList<PlaylistEntry>> entries
        = parseBytes(bytes, PlaylistLines::Encoding::utf8, context, bytesRead, stop))
        return std::move(*entries);
    return parseBytes(bytes, PlaylistLines::Encoding::latin1, context, bytesRead, stop)
        .value_or(QList<PlaylistEntry>());
}

std::optional<QString> PlaylistParser::attribute(QStringView name, QStringView line)
{
    const std::optional<QStringView> value = ExtinfAttributes(line).value(name);
    if (!value)
        return std::nullopt;
    return value->toString();
}

std::optional<QString> PlaylistParser::inferredCountryCode(const std::optional<QString> &tvgID)
{
    if (!tvgID)
        return std::nullopt;
    const std::optional<QStringView> piece = countryPieceOfTvgId(*tvgID);
    return piece ? twoCharacterCode(*piece) : std::nullopt;
}

std::optional<QString> PlaylistParser::normalizedCountryCode(QStringView value)
{
    const std::optional<QStringView> piece = countryPieceOfList(value);
    return piece ? twoCharacterCode(*piece) : std::nullopt;
}
