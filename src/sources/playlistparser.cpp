#include "playlistparser.h"

#include "entryroom.h"
#include "extinfattributes.h"
#include "playlistheader.h"
#include "playlistlinereader.h"
#include "playlistlines.h"
#include "playlistpools.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace {

// About how many entries a list of size characters holds, guessed from its start (text): every
// entry takes at least one line. Room for them is reserved before the first entry, so that
// nothing is copied as the list grows; spare room is address space that is never touched, and
// a list that beats the guess grows as lists do.
// At most about 90 MB of address space: a list of blank lines, or one whose start is far
// denser than the rest, must not claim more.
constexpr qsizetype mostExpected = 1 << 20;

template<typename Text>
qsizetype expectedEntries(Text text, qsizetype size)
{
    constexpr qsizetype sampleSize = 64 << 10;
    const Text sample = text.first(std::min(text.size(), sampleSize));
    const qsizetype lines = sample.count(u'\n') + 1;
    const double perCharacter = double(lines) / double(std::max<qsizetype>(sample.size(), 1));
    return std::min(mostExpected, qsizetype(perCharacter * double(size) * 1.1) + 16);
}

// What every part of a list is read with.
struct ParseContext
{
    QUrl baseURL;
    CatchupAttributes headerCatchup;
};

void parseLines(PlaylistLineReader &parser, QStringView text)
{
    const char16_t *const data = text.utf16();
    const qsizetype size = text.size();
    qsizetype start = 0;
    while (start < size) {
        qsizetype end = start;
        while (end < size && !PlaylistLines::isLineBreak(data[end]))
            ++end;
        parser.read(text.sliced(start, end - start));
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
        [&](QStringView untrimmed, QByteArrayView ascii, qsizetype pieceStart, bool firstInPiece) {
            if (untrimmed.isNull() && !ascii.isEmpty()) {
                afterAddress = true; // neither blank nor a comment
                return true;
            }
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
PlaylistLines::Walk readPart(PlaylistLineReader &parser, QByteArrayView part,
                             PlaylistLines::Encoding encoding,
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
            parser.read(line, ascii);
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

// Room for the entries of a list of totalBytes, guessed from a part of partBytes that held
// entries: a little more than the part's density foretells, as a list that beats the guess
// only costs a copy, and never more than mostExpected.
qsizetype roomFor(qsizetype entries, qsizetype partBytes, qsizetype totalBytes)
{
    const double perByte = double(entries) / double(std::max<qsizetype>(partBytes, 1));
    return std::min(mostExpected, qsizetype(perByte * double(totalBytes) * 1.06) + 1024);
}

// The entries placed from the start, the spilled ones of each reader (see parseBytes), then
// those placed from the end.
QList<PlaylistEntry> gathered(EntryRoom &room, QList<PlaylistEntry> spilledFront,
                              QList<PlaylistEntry> spilledBack,
                              const std::vector<std::pair<qsizetype, qsizetype>> &backParts)
{
    const qsizetype frontCount = room.frontCount();
    QList<PlaylistEntry> placed = room.take();
    if (spilledFront.isEmpty() && spilledBack.isEmpty())
        return placed;
    QList<PlaylistEntry> entries;
    entries.reserve(placed.size() + spilledFront.size() + spilledBack.size());
    const auto moveOver = [&](QList<PlaylistEntry> &from, qsizetype begin, qsizetype end) {
        std::move(from.begin() + begin, from.begin() + end, std::back_inserter(entries));
    };
    moveOver(placed, 0, frontCount);
    moveOver(spilledFront, 0, spilledFront.size());
    for (auto part = backParts.rbegin(); part != backParts.rend(); ++part)
        moveOver(spilledBack, part->first, part->second);
    moveOver(placed, frontCount, placed.size());
    return entries;
}

// Nothing when the bytes are read as UTF-8 and are not. A large list is cut into parts, read by
// two threads at once: this one reads them from the front, a worker from the back. Whichever
// is quicker reads more (the two cores of a machine are seldom equally free). Each reads a
// part into a list of its own, whose memory stays warm from part to part, and moves it into
// one room: this thread's parts from the start up, the worker's from the end down. When the
// two ends meet before the parts run out, each reader keeps the rest of its parts, which go
// between the two ends at the end.
std::optional<QList<PlaylistEntry>>
parseBytes(QByteArrayView bytes, PlaylistLines::Encoding encoding, const ParseContext &context,
           const PlaylistParser::BytesRead &bytesRead, const std::stop_token &stop)
{
    constexpr qsizetype parallelFromBytes = 1 << 20;
    constexpr qsizetype partSize = 1 << 20;
    constexpr qsizetype mostParts = 256;
    PlaylistLineReader front(context.baseURL, context.headerCatchup);
    const QList<qsizetype> starts
        = bytes.size() >= parallelFromBytes && std::thread::hardware_concurrency() > 1
        ? partStarts(bytes, encoding, std::clamp(bytes.size() / partSize, qsizetype(2), mostParts))
        : QList<qsizetype> {0};
    if (starts.size() == 1) {
        front.expect(expectedEntries(bytes, bytes.size()));
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
    std::optional<EntryRoom> room; // made once the first part with entries is read
    // The next part to read from one end, or -1 when the two have met or reading ends.
    const auto claim = [&](bool fromFront) {
        const std::lock_guard lock(claiming);
        if (nextFront > nextBack || notUtf8 || stop.stop_requested())
            return qsizetype(-1);
        return fromFront ? nextFront++ : nextBack--;
    };
    const auto read = [&](PlaylistLineReader &parser, qsizetype part) {
        if (readPart(parser, partAt(part), encoding, bytesRead, stop)
            != PlaylistLines::Walk::notUtf8)
            return true;
        const std::lock_guard lock(claiming);
        notUtf8 = true;
        return false;
    };
    // Moves the entries of a part just read into the room; false when they do not fit.
    const auto place = [&](PlaylistLineReader &parser, qsizetype part, bool fromFront) {
        PlaylistEntry *slots = nullptr;
        {
            const std::lock_guard lock(claiming);
            if (!room) {
                if (parser.size() == 0)
                    return true;
                room.emplace(roomFor(parser.size(), partAt(part).size(), bytes.size()));
            }
            slots = fromFront ? room->claimFront(parser.size()) : room->claimBack(parser.size());
        }
        if (!slots)
            return false;
        parser.moveEntriesTo(slots);
        return true;
    };
    // Where each part the worker kept begins and ends in its list, the last part first.
    std::vector<std::pair<qsizetype, qsizetype>> backParts;
    PlaylistLineReader back(context.baseURL, context.headerCatchup);
    std::thread worker([&] {
        bool spilled = false;
        for (qsizetype part; (part = claim(false)) >= 0;) {
            const qsizetype from = back.size();
            if (!read(back, part))
                return;
            spilled = spilled || !place(back, part, false);
            if (spilled)
                backParts.emplace_back(from, back.size());
        }
    });
    bool spilled = false;
    for (qsizetype part; (part = claim(true)) >= 0;) {
        if (!read(front, part))
            break;
        spilled = spilled || !place(front, part, true);
    }
    worker.join();
    if (notUtf8)
        return std::nullopt;
    if (!room)
        return QList<PlaylistEntry>();
    return gathered(*room, front.take(), back.take(), backParts);
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
    PlaylistLineReader parser(context.baseURL, context.headerCatchup);
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
            // The first part's list has room for the whole list: the second is moved behind.
            first.append(std::move(second));
            return first;
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
