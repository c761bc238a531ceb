#include "plainaddress.h"

#include <array>
#include <cstring>
#include <string_view>

namespace {

// The readings work on either kind of text through these views.
using Wide = std::u16string_view;
using Narrow = std::string_view;

Wide viewOf(QStringView text)
{
    return Wide(text.utf16(), size_t(text.size()));
}

Narrow viewOf(QByteArrayView ascii)
{
    return Narrow(ascii.data(), size_t(ascii.size()));
}

template<typename Text>
char16_t at(Text text, size_t i)
{
    return char16_t(std::make_unsigned_t<typename Text::value_type>(text[i]));
}

template<typename Text>
bool startsWith(Text text, std::string_view ascii)
{
    if (text.size() < ascii.size())
        return false;
    for (size_t i = 0; i < ascii.size(); ++i) {
        if (at(text, i) != char16_t(ascii[i]))
            return false;
    }
    return true;
}

constexpr bool isLowerAlnum(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9');
}

// Characters QUrl leaves as they are in a path or query: RFC 3986 unreserved and sub-delims,
// ":", "@", "/" and "?" (letters, digits and -._~!$&'()*+,;=:@/?). "%" and "#" are left to QUrl,
// which may rewrite what follows them. For one character or for a vector of them side by side
// (where each comparison gives a lane of all ones or zeros): printable ASCII without " # % < >
// [ \ ] ^ ` { | }. Ranges are tested by one unsigned comparison after a subtraction, and pairs
// that differ in one bit by one comparison with that bit set.
template<typename Characters>
constexpr auto plainInPath(Characters c)
{
    return (Characters(c - 0x21) <= 0x7E - 0x21) & ((c | 1) != 0x23) & (c != 0x25)
        & ((c | 2) != 0x3E) & (Characters(c - 0x5B) > 0x5E - 0x5B) & (c != 0x60)
        & (Characters(c - 0x7B) > 0x7D - 0x7B);
}

// Every character of text is a plain path character. Addresses are long: sixteen bytes of
// characters are tested at once.
using ByteLanes = quint8 __attribute__((vector_size(16)));
using WideLanes = quint16 __attribute__((vector_size(16)));

template<typename Text>
bool allPlainPathCharacters(Text text)
{
    using Lanes = std::conditional_t<sizeof(typename Text::value_type) == 1, ByteLanes, WideLanes>;
    constexpr size_t width = sizeof(Lanes) / sizeof(typename Text::value_type);
    const auto plainAt = [&](size_t i) {
        Lanes lanes;
        std::memcpy(&lanes, text.data() + i, sizeof lanes);
        const auto plain = plainInPath(lanes);
        quint64 halves[2];
        std::memcpy(halves, &plain, sizeof halves);
        return (halves[0] & halves[1]) == ~quint64(0);
    };
    if (text.size() < width) {
        for (size_t i = 0; i < text.size(); ++i) {
            if (!plainInPath(at(text, i)))
                return false;
        }
        return true;
    }
    for (size_t i = 0; i + width <= text.size(); i += width) {
        if (!plainAt(i))
            return false;
    }
    // The last characters in a vector of their own, which may overlap the one before.
    return plainAt(text.size() - width);
}

// A label of a host name that QUrl keeps unchanged: not empty, not over 63 characters, not
// starting or ending with "-", and no punycode.
template<typename Text>
bool isPlainLabel(Text label)
{
    return !label.empty() && label.size() <= 63 && label.front() != '-' && label.back() != '-'
        && !startsWith(label, "xn--");
}

template<typename Text>
bool isPlainPort(Text port)
{
    if (port.empty() || port.size() > 5 || port.front() == '0')
        return false;
    int value = 0;
    for (size_t i = 0; i < port.size(); ++i) {
        const char16_t c = at(port, i);
        if (c < u'0' || c > u'9')
            return false;
        value = value * 10 + (c - u'0');
    }
    return value <= 65535;
}

// What a character is to a host name that is read in one pass; the end comes at ":", "/", "?".
enum class HostCharacter : quint8 { other, label, dot, end };

constexpr std::array<HostCharacter, 128> hostCharacters = [] {
    std::array<HostCharacter, 128> kinds {};
    for (char16_t c = 0; c < 128; ++c) {
        if (isLowerAlnum(c) || c == u'-')
            kinds[c] = HostCharacter::label;
        else if (c == u'.')
            kinds[c] = HostCharacter::dot;
        else if (c == u':' || c == u'/' || c == u'?')
            kinds[c] = HostCharacter::end;
    }
    return kinds;
}();

// Whether the text is a plain address: see PlainAddress::encoded.
template<typename Text>
bool isPlainAddress(Text text)
{
    size_t authorityStart = 0;
    if (startsWith(text, "http://"))
        authorityStart = 7;
    else if (startsWith(text, "https://"))
        authorityStart = 8;
    else
        return false;

    // The host, read in one pass up to a ":" or the path: lower-case labels between dots. QUrl
    // reads a host whose labels are all numbers, in any base ("0x7f000001", "0177.1", "127.1"),
    // as an IPv4 address: a host whose labels all begin with a digit is left to it.
    const size_t size = text.size();
    size_t i = authorityStart;
    size_t labelStart = i;
    bool everyLabelBeginsWithADigit = true;
    for (;; ++i) {
        const char16_t c = i < size ? at(text, i) : u'/';
        const HostCharacter kind = c < 0x80 ? hostCharacters[c] : HostCharacter::other;
        if (kind == HostCharacter::label)
            continue;
        if (kind == HostCharacter::other)
            return false;
        const Text label = text.substr(labelStart, i - labelStart);
        if (!isPlainLabel(label))
            return false;
        everyLabelBeginsWithADigit &= label.front() >= '0' && label.front() <= '9';
        if (c != u'.')
            break;
        labelStart = i + 1;
    }
    if (i - authorityStart > 253 || everyLabelBeginsWithADigit)
        return false;
    if (i < size && at(text, i) == u':') {
        const size_t portStart = i + 1;
        i = portStart;
        while (i < size && at(text, i) != u'/' && at(text, i) != u'?')
            ++i;
        if (!isPlainPort(text.substr(portStart, i - portStart)))
            return false;
    }
    return allPlainPathCharacters(text.substr(i));
}

// Whether a path has a "." or ".." segment, which resolving removes.
template<typename Text>
bool hasDotSegment(Text path)
{
    size_t segmentStart = 0;
    for (size_t i = 0; i <= path.size(); ++i) {
        if (i < path.size() && path[i] != '/')
            continue;
        const size_t length = i - segmentStart;
        if ((length == 1 || length == 2) && path[segmentStart] == '.'
            && path[segmentStart + length - 1] == '.')
            return true;
        segmentStart = i + 1;
    }
    return false;
}

// Whether a path has two slashes in a row.
template<typename Text>
bool hasEmptySegment(Text path)
{
    for (size_t i = 1; i < path.size(); ++i) {
        if (path[i] == '/' && path[i - 1] == '/')
            return true;
    }
    return false;
}

template<typename Text>
bool isPlainRelative(Text text)
{
    if (text.empty() || text.front() == '/' || text.front() == '?' || !allPlainPathCharacters(text))
        return false;
    const Text path = text.substr(0, text.find('?'));
    // A colon before the first slash makes the text an address of its own scheme. Qt 6.8 merges
    // the slashes of an empty segment in a local file's path, Qt 6.4 does not: neither is plain.
    return path.substr(0, path.find('/')).find(':') == Text::npos && !hasDotSegment(path)
        && !hasEmptySegment(path);
}

// text, ASCII, as bytes after prefix into a buffer of their size.
template<typename Text>
void writeAscii(QByteArrayView prefix, Text text, QByteArray &into)
{
    into.resize(prefix.size() + qsizetype(text.size()));
    char *const out = into.data();
    if (!prefix.isEmpty())
        std::memcpy(out, prefix.data(), size_t(prefix.size()));
    if constexpr (sizeof(typename Text::value_type) == 1) {
        std::memcpy(out + prefix.size(), text.data(), text.size());
    } else {
        for (size_t i = 0; i < text.size(); ++i)
            out[prefix.size() + qsizetype(i)] = char(text[i]);
    }
}

template<typename Text>
bool encodeText(Text text, QByteArray &into)
{
    if (!isPlainAddress(text))
        return false;
    writeAscii({}, text, into);
    return true;
}

template<typename Text>
bool encodeRelativeText(Text text, QByteArrayView directory, QByteArray &into)
{
    if (directory.isEmpty() || !isPlainRelative(text))
        return false;
    writeAscii(directory, text, into);
    return true;
}

} // namespace

namespace PlainAddress {

bool encode(QStringView text, QByteArray &into)
{
    return encodeText(viewOf(text), into);
}

bool encode(QByteArrayView ascii, QByteArray &into)
{
    return encodeText(viewOf(ascii), into);
}

std::optional<QByteArray> encoded(QStringView text)
{
    QByteArray bytes;
    if (!encode(text, bytes))
        return std::nullopt;
    return bytes;
}

QByteArray baseDirectory(const QUrl &base)
{
    if (!base.isValid() || base.isRelative() || !base.path().startsWith(u'/'))
        return {};
    const QUrl directory
        = base.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment | QUrl::RemoveFilename);
    const QString path = directory.path(QUrl::FullyEncoded);
    if (hasDotSegment(viewOf(QStringView(path))) || hasEmptySegment(viewOf(QStringView(path))))
        return {};
    const QByteArray bytes = directory.toEncoded();
    return QByteArray(bytes.constData(), bytes.size());
}

bool encodeRelative(QStringView text, QByteArrayView directory, QByteArray &into)
{
    return encodeRelativeText(viewOf(text), directory, into);
}

bool encodeRelative(QByteArrayView ascii, QByteArrayView directory, QByteArray &into)
{
    return encodeRelativeText(viewOf(ascii), directory, into);
}

} // namespace PlainAddress
