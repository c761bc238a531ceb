#include "extinfattributes.h"

#include "asciiprefix.h"

#include <QString>

#include <algorithm>
#include <bit>
#include <cstring>

#include <span>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr qsizetype tailSize = 8;
// Characters are read several to a word below, the first in the lowest bits.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN);

char16_t asciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
}

// The last up to eight characters of text, lower-cased, the last in the lowest byte; nothing
// when one of them is not ASCII.
std::optional<quint64> packedTail(QStringView text)
{
    if (text.size() >= 8) {
        // Four characters per word: ASCII when no lane has a bit above the seventh.
        quint64 words[2];
        std::memcpy(words, text.utf16() + text.size() - 8, sizeof words);
        if (((words[0] | words[1]) & 0xFF80FF80FF80FF80ULL) != 0)
            return std::nullopt;
        // The low byte of each lane, the first character in the lowest byte.
        const auto packed = [](quint64 w) {
            w = (w | (w >> 8)) & 0x0000FFFF0000FFFFULL;
            return quint32((w | (w >> 16)) & 0xFFFFFFFFULL);
        };
        // The last character goes to the lowest byte.
        quint64 tail = (quint64(__builtin_bswap32(packed(words[0]))) << 32)
            | __builtin_bswap32(packed(words[1]));
        // Upper-case letters to lower-case, eight at once.
        constexpr quint64 ones = 0x0101010101010101ULL;
        const quint64 atLeastA = tail + (0x80 - 'A') * ones;
        const quint64 pastZ = tail + (0x80 - 'Z' - 1) * ones;
        tail |= ((atLeastA & ~pastZ) & (0x80 * ones)) >> 2;
        return tail;
    }
    quint64 tail = 0;
    const qsizetype count = std::min(text.size(), tailSize);
    for (qsizetype i = 0; i < count; ++i) {
        const char16_t c = text[text.size() - 1 - i].unicode();
        if (c >= 0x80)
            return std::nullopt;
        tail |= quint64(asciiLower(c)) << (8 * i);
    }
    return tail;
}

// Compared from the end: attribute names mostly share their beginning ("tvg-").
bool equalsIgnoringCase(QStringView text, QStringView name)
{
    for (qsizetype i = name.size() - 1; i >= 0; --i) {
        const char16_t a = text[i].unicode();
        const char16_t b = name[i].unicode();
        if (a >= 0x80 || b >= 0x80) // rare: let Qt fold the whole thing
            return QtPrivate::compareStrings(text, name, Qt::CaseInsensitive) == 0;
        if (asciiLower(a) != asciiLower(b))
            return false;
    }
    return true;
}

// Calls visit(at) for each "=", quote and comma of text, in order. Most of a line is none of
// them: sixteen characters are looked at at once where SSE2 is there, else eight.
template<typename Visit>
void forEachMark(const char16_t *data, qsizetype size, Visit visit)
{
    qsizetype at = 0;
#if defined(__SSE2__)
    const __m128i equals = _mm_set1_epi16(u'=');
    const __m128i quotes = _mm_set1_epi16(u'"');
    const __m128i commas = _mm_set1_epi16(u',');
    const auto marksOf = [&](const char16_t *from) {
        const __m128i lanes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
        return _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi16(lanes, equals), _mm_cmpeq_epi16(lanes, quotes)),
            _mm_cmpeq_epi16(lanes, commas));
    };
    for (; at + 16 <= size; at += 16) {
        // A bit for each character, the first lowest.
        auto found = unsigned(
            _mm_movemask_epi8(_mm_packs_epi16(marksOf(data + at), marksOf(data + at + 8))));
        for (; found != 0; found &= found - 1)
            visit(at + std::countr_zero(found));
    }
#else
    using Lanes = quint16 __attribute__((vector_size(16)));
    constexpr qsizetype width = sizeof(Lanes) / sizeof(char16_t);
    for (; at + width <= size; at += width) {
        Lanes lanes;
        std::memcpy(&lanes, data + at, sizeof lanes);
        // Compared with whole vectors: clang 14 fails on a vector compared with a char16_t.
        constexpr Lanes equals {u'=', u'=', u'=', u'=', u'=', u'=', u'=', u'='};
        constexpr Lanes quotes {u'"', u'"', u'"', u'"', u'"', u'"', u'"', u'"'};
        constexpr Lanes commas {u',', u',', u',', u',', u',', u',', u',', u','};
        const auto marks = (lanes == equals) | (lanes == quotes) | (lanes == commas);
        quint64 halves[2];
        std::memcpy(halves, &marks, sizeof halves);
        for (qsizetype i = 0; i < width; ++i) {
            if ((halves[i / 4] >> (16 * (i % 4))) & 1)
                visit(at + i);
        }
    }
#endif
    for (; at < size; ++at) {
        const char16_t c = data[at];
        if (c == u'=' || c == u'"' || c == u',')
            visit(at);
    }
}

} // namespace

ExtinfAttributes::ExtinfAttributes(QStringView line)
    : m_line(line)
{
    // One reading of the line, from one "=", quote or comma to the next. Places wait for the
    // quote that ends their value in the order they opened: a quote two or more characters after
    // a place's "=" ends it, and every place opened before it.
    const char16_t *const data = line.utf16();
    const qsizetype size = line.size();
    qsizetype firstWaiting = 0;
    forEachMark(data, size, [&](qsizetype at) {
        switch (data[at]) {
        case u'"':
            while (firstWaiting < m_places.size() && m_places[firstWaiting].equals + 2 <= at)
                m_places[firstWaiting++].closing = at;
            break;
        case u',':
            m_commas.append(at);
            break;
        default: // "="
            if (at + 1 < size && data[at + 1] == u'"') {
                Place place;
                place.equals = at;
                const std::optional<quint64> tail = packedTail(line.first(at));
                place.asciiTail = tail.has_value();
                place.tail = tail.value_or(0);
                m_places.append(place);
            }
            break;
        }
    });
}

bool ExtinfAttributes::nameEndsAt(const Place &place, QStringView name, quint64 nameTail) const
{
    if (place.equals < name.size())
        return false;
    const QStringView before = m_line.sliced(place.equals - name.size(), name.size());
    if (!place.asciiTail)
        return equalsIgnoringCase(before, name);
    const qsizetype compared = std::min(name.size(), tailSize);
    const quint64 mask = compared == tailSize ? ~quint64(0) : (quint64(1) << (8 * compared)) - 1;
    if ((place.tail ^ nameTail) & mask)
        return false;
    return name.size() <= tailSize
        || equalsIgnoringCase(before.first(name.size() - tailSize),
                              name.first(name.size() - tailSize));
}

std::optional<QStringView> ExtinfAttributes::value(QStringView name) const
{
    const std::optional<quint64> nameTail = packedTail(name);
    for (const Place &place : m_places) {
        const bool matches = nameTail ? nameEndsAt(place, name, *nameTail)
                                      : place.equals >= name.size()
                && equalsIgnoringCase(m_line.sliced(place.equals - name.size(), name.size()), name);
        if (!matches)
            continue;
        if (place.closing < 0)
            return std::nullopt;
        const qsizetype valueStart = place.equals + 2;
        const QStringView value
            = trimmedText(m_line.sliced(valueStart, place.closing - valueStart));
        if (value.isEmpty())
            return std::nullopt;
        return value;
    }
    return std::nullopt;
}

ExtinfAttributes::NameSet::NameSet(const QStringView *names, qsizetype count)
{
    Q_ASSERT(count <= 32);
    for (const QStringView name : std::span(names, size_t(count))) {
        Name made;
        made.text = name;
        const std::optional<quint64> tail = packedTail(name);
        made.asciiTail = tail.has_value();
        made.tail = tail.value_or(0);
        const qsizetype compared = std::min(name.size(), tailSize);
        made.mask = compared == tailSize ? ~quint64(0) : (quint64(1) << (8 * compared)) - 1;
        const quint32 bit = quint32(1) << m_names.size();
        if (made.asciiTail && !name.isEmpty()) {
            m_endingIn[size_t(made.tail & 0x7f)] |= bit;
        } else {
            // Not told apart by an ASCII last character: compared at every value.
            for (quint32 &names : m_endingIn)
                names |= bit;
        }
        m_names.append(made);
    }
}

ExtinfAttributes::Values ExtinfAttributes::values(const NameSet &names) const
{
    Values values(names.size());
    const quint32 all = names.size() == 32 ? ~quint32(0) : (quint32(1) << names.size()) - 1;
    quint32 left = all; // the names whose first place is still to be met
    for (const Place &place : m_places) {
        // A name ending in some other character cannot stand before this "=", unless the line
        // has something other than ASCII there.
        quint32 candidates = left;
        if (place.asciiTail && place.equals > 0)
            candidates &= names.m_endingIn[size_t(place.tail & 0x7f)];
        while (candidates != 0) {
            const int i = qCountTrailingZeroBits(candidates);
            candidates &= candidates - 1;
            const NameSet::Name &name = names.m_names[i];
            bool matches = false;
            if (name.asciiTail && place.asciiTail) {
                matches = ((place.tail ^ name.tail) & name.mask) == 0
                    && place.equals >= name.text.size()
                    && (name.text.size() <= tailSize
                        || equalsIgnoringCase(m_line.sliced(place.equals - name.text.size(),
                                                            name.text.size() - tailSize),
                                              name.text.first(name.text.size() - tailSize)));
            } else {
                matches = place.equals >= name.text.size()
                    && equalsIgnoringCase(
                              m_line.sliced(place.equals - name.text.size(), name.text.size()),
                              name.text);
            }
            if (!matches)
                continue;
            left &= ~(quint32(1) << i);
            if (place.closing < 0)
                continue;
            const qsizetype valueStart = place.equals + 2;
            const QStringView value
                = trimmedText(m_line.sliced(valueStart, place.closing - valueStart));
            if (!value.isEmpty())
                values[i] = value;
        }
        if (left == 0)
            break;
    }
    return values;
}

qsizetype ExtinfAttributes::titleComma() const
{
    // The first comma at or after from, or -1.
    const auto commaFrom = [this](qsizetype from) {
        const auto comma = std::lower_bound(m_commas.begin(), m_commas.end(), from);
        return comma == m_commas.end() ? qsizetype(-1) : *comma;
    };
    qsizetype valueEnd = 0; // where the text after the last value read begins
    for (const Place &place : m_places) {
        if (place.equals < valueEnd)
            continue; // inside the value before
        const qsizetype comma = commaFrom(valueEnd);
        if (comma >= 0 && comma < place.equals)
            return comma;
        if (place.closing < 0)
            return commaFrom(0);
        valueEnd = place.closing + 1;
    }
    return commaFrom(valueEnd);
}
