#include "playlistlines.h"

#include <QString>
#include <QStringDecoder>

#include <array>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// Lines are cut at ASCII line breaks first. Such a piece of valid UTF-8 is valid UTF-8 by
// itself, and most pieces are plain ASCII, which needs no decoding at all.
enum class ByteKind : quint8 { plain, lineBreak, notAscii };

constexpr std::array<ByteKind, 256> byteKinds = [] {
    std::array<ByteKind, 256> kinds {};
    for (int byte = 0; byte < 256; ++byte) {
        if (byte >= 0x0A && byte <= 0x0D)
            kinds[size_t(byte)] = ByteKind::lineBreak;
        else if (byte >= 0x80)
            kinds[size_t(byte)] = ByteKind::notAscii;
    }
    return kinds;
}();

// The end of the piece starting at start: the next ASCII line break, or size. Tells whether the
// piece is plain ASCII. Many bytes at a time while none is below 0x0E (a line break, a tab,
// NUL), which is nearly the whole line.
qsizetype pieceEnd(const uchar *data, qsizetype start, qsizetype size, bool &ascii)
{
    constexpr quint64 ones = 0x0101010101010101ULL;
    constexpr quint64 highBits = 0x8080808080808080ULL;
    quint64 seen = 0;
    qsizetype at = start;
#if defined(__SSE2__)
    // Sixteen at a time where the processor has the instructions for it (every x86-64 one),
    // then eight.
    const __m128i belowFourteen = _mm_set1_epi8(0x0D);
    while (at + 16 <= size) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + at));
        const int low
            = _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(bytes, belowFourteen), bytes));
        const int high = _mm_movemask_epi8(bytes);
        if (low != 0) {
            const int first = std::countr_zero(unsigned(low));
            seen |= (high & ((1 << first) - 1)) != 0 ? highBits : 0;
            at += first;
            break;
        }
        seen |= high != 0 ? highBits : 0;
        at += 16;
    }
#endif
    while (at + 8 <= size) {
        quint64 word;
        std::memcpy(&word, data + at, sizeof word);
        if ((word - 0x0E * ones) & ~word & highBits)
            break;
        seen |= word;
        at += 8;
    }
    ascii = !(seen & highBits);
    for (; at < size; ++at) {
        const ByteKind kind = byteKinds[data[at]];
        if (kind == ByteKind::lineBreak)
            return at;
        if (kind == ByteKind::notAscii)
            ascii = false;
    }
    return size;
}

// Decodes a piece of UTF-8 that ends before an ASCII byte or at the end of the list into out,
// which has room for piece.size() code units. The units written, or -1 when the piece is not
// UTF-8, an incomplete sequence included (what follows it is no continuation). As
// QStringDecoder reads without a state: U+FEFF and non-characters are kept; overlong forms,
// surrogates and code points past U+10FFFF are errors. Such a line is mostly ASCII, which is
// widened sixteen bytes at a time where SSE2 is there.
qsizetype decodeUtf8(QByteArrayView piece, char16_t *out)
{
    const auto *const data = reinterpret_cast<const uchar *>(piece.data());
    const qsizetype size = piece.size();
    char16_t *written = out;
    qsizetype at = 0;
    while (at < size) {
#if defined(__SSE2__)
        if (at + 16 <= size) {
            // Written ahead in full: the units never outrun the bytes, so there is room.
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + at));
            const __m128i zero = _mm_setzero_si128();
            _mm_storeu_si128(reinterpret_cast<__m128i *>(written), _mm_unpacklo_epi8(bytes, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(written + 8),
                             _mm_unpackhi_epi8(bytes, zero));
            const auto high = unsigned(_mm_movemask_epi8(bytes));
            const int plain = high == 0 ? 16 : std::countr_zero(high);
            written += plain;
            at += plain;
            if (plain == 16)
                continue;
        }
#endif
        const uchar lead = data[at];
        if (lead < 0x80) {
            *written++ = lead;
            ++at;
            continue;
        }
        qsizetype length = 0;
        char32_t point = 0;
        char32_t least = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
            point = lead & 0x1F;
            least = 0x80;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            point = lead & 0x0F;
            least = 0x800;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            point = lead & 0x07;
            least = 0x10000;
        } else {
            return -1;
        }
        if (at + length > size)
            return -1;
        for (qsizetype i = 1; i < length; ++i) {
            const uchar next = data[at + i];
            if ((next & 0xC0) != 0x80)
                return -1;
            point = (point << 6) | (next & 0x3F);
        }
        if (point < least || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF))
            return -1;
        if (point >= 0x10000) {
            *written++ = char16_t(0xD7C0 + (point >> 10));
            *written++ = char16_t(0xDC00 | (point & 0x3FF));
        } else {
            *written++ = char16_t(point);
        }
        at += length;
    }
    return written - out;
}

// Whether a piece may hold NEL, LINE or PARAGRAPH SEPARATOR: their encodings begin with bytes
// that are rare in text, so that most pieces need no search of their decoded text.
bool mayHoldOtherLineBreaks(QByteArrayView piece, PlaylistLines::Encoding encoding)
{
    if (encoding == PlaylistLines::Encoding::latin1)
        return piece.contains('\x85');
    return piece.contains('\xC2') || piece.contains('\xE2');
}

// Whether decoded text holds NEL, LINE or PARAGRAPH SEPARATOR, text being a piece without ASCII
// line breaks. Without an early exit, so that the compiler tests many characters at once: such
// breaks are rare, and most non-ASCII lines are read as one.
bool holdsOtherLineBreaks(QStringView text)
{
    bool found = false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        found |= (u == 0x85) | ((u | 1) == 0x2029);
    }
    return found;
}

} // namespace

namespace PlaylistLines {

Walk walk(QByteArrayView bytes, Encoding encoding, const Visit &visit)
{
    const auto *const data = reinterpret_cast<const uchar *>(bytes.data());
    const qsizetype size = bytes.size();
    QString buffer; // reused from line to line
    qsizetype start = 0;
    while (start < size) {
        bool ascii = true;
        const qsizetype end = pieceEnd(data, start, size, ascii);
        const QByteArrayView piece = bytes.sliced(start, end - start);
        if (ascii) {
            qsizetype first = start;
            while (first < end && (data[first] == ' ' || data[first] == '\t'))
                ++first;
            if (first < end && data[first] != '#') {
                if (!visit(QStringView(), piece, start, true))
                    return Walk::stopped;
                start = end + 1;
                continue;
            }
            buffer = QLatin1StringView(piece.data(), piece.size());
            if (!visit(QStringView(buffer), piece, start, true))
                return Walk::stopped;
        } else {
            if (encoding == Encoding::latin1) {
                buffer = QLatin1StringView(piece.data(), piece.size());
            } else if (end < size) {
                // Into the reused buffer: most lines are short and need no allocation.
                buffer.resize(piece.size());
                const qsizetype written
                    = decodeUtf8(piece, reinterpret_cast<char16_t *>(buffer.data()));
                if (written < 0)
                    return Walk::notUtf8;
                buffer.truncate(written);
            } else {
                // As when the whole text is decoded, a sequence cut short by the end is left
                // out rather than taken for an error.
                QStringDecoder last(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
                buffer = last.decode(piece);
                if (last.hasError())
                    return Walk::notUtf8;
            }
            const QStringView text(buffer);
            if (!mayHoldOtherLineBreaks(piece, encoding) || !holdsOtherLineBreaks(text)) {
                if (!visit(text, {}, start, true))
                    return Walk::stopped;
                start = end + 1;
                continue;
            }
            qsizetype from = 0;
            for (qsizetype at = 0; at <= text.size(); ++at) {
                if (at < text.size() && !isLineBreak(text[at].unicode()))
                    continue;
                if (!visit(text.sliced(from, at - from), {}, start, from == 0))
                    return Walk::stopped;
                from = at + 1;
            }
        }
        start = end + 1;
    }
    return Walk::finished;
}

} // namespace PlaylistLines
