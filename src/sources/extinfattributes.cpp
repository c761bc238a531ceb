#include "extinfattributes.h"

#include <QString>

#include <span>

namespace {

constexpr qsizetype tailSize = 8;

char16_t asciiLower(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
}

// The last up to eight characters of text, lower-cased, the last in the lowest byte; nothing
// when one of them is not ASCII.
std::optional<quint64> packedTail(QStringView text)
{
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

} // namespace

ExtinfAttributes::ExtinfAttributes(QStringView line)
    : m_line(line)
{
    for (qsizetype at = line.indexOf(u'='); at >= 0 && at + 1 < line.size();
         at = line.indexOf(u'=', at + 1)) {
        if (line[at + 1] != u'"')
            continue;
        Place place;
        place.equals = at;
        place.closing = line.indexOf(u'"', at + 2);
        const std::optional<quint64> tail = packedTail(line.first(at));
        place.asciiTail = tail.has_value();
        place.tail = tail.value_or(0);
        m_places.append(place);
    }
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
        const QStringView value = m_line.sliced(valueStart, place.closing - valueStart).trimmed();
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
                = m_line.sliced(valueStart, place.closing - valueStart).trimmed();
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
    qsizetype comma = m_line.indexOf(u',');
    qsizetype at = 0; // where the text after the last quoted value begins
    for (const Place &place : m_places) {
        if (comma < 0 || comma < place.equals + 1)
            return comma;
        if (place.equals < at)
            continue; // inside the value before
        if (place.closing < 0)
            return m_line.indexOf(u',');
        at = place.closing + 1;
        if (comma < at)
            comma = m_line.indexOf(u',', at);
    }
    return comma;
}
