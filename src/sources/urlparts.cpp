#include "urlparts.h"

#include "asciiprefix.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstring>

namespace UrlParts {

namespace {

int hexValue(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

bool isInvalidExtensionCharacter(QChar c)
{
    switch (c.unicode()) {
    case u' ':
    case u'/':
    case 0x061C:
    case 0x200E:
    case 0x200F:
    case 0x202A:
    case 0x202B:
    case 0x202C:
    case 0x202D:
    case 0x202E:
    case 0x2066:
    case 0x2067:
    case 0x2068:
    case 0x2069:
        return true;
    default:
        return false;
    }
}

// The last component of a path with trailing slashes ignored; empty when there is none.
QStringView lastSegment(QStringView path)
{
    qsizetype end = path.size();
    while (end > 0 && path[end - 1] == u'/')
        --end;
    const qsizetype slash = path.first(end).lastIndexOf(u'/');
    return path.sliced(slash + 1, end - slash - 1);
}

// The extension of one path component, by the rule documented for pathExtension().
QStringView extensionOf(QStringView component)
{
    if (component.endsWith(u'.') || component.startsWith(u".."))
        return {};
    const qsizetype dot = component.lastIndexOf(u'.');
    if (dot <= 0)
        return {};
    const QStringView extension = component.sliced(dot + 1);
    for (QChar c : extension) {
        if (isInvalidExtensionCharacter(c))
            return {};
    }
    return extension;
}

bool isLowerAlnum(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9');
}

// Characters QUrl leaves as they are in a path or query: RFC 3986 unreserved and sub-delims,
// ":", "@", "/" and "?" (letters, digits and -._~!$&'()*+,;=:@/?). "%" and "#" are left to QUrl,
// which may rewrite what follows them. As ranges, for one character or for eight side by side
// (a vector, where each comparison gives a lane of all ones or zeros): printable ASCII without
// " # % < > [ \\ ] ^ ` { | }.
template<typename Characters>
constexpr auto plainInPath(Characters c)
{
    return (c >= 0x21) & (c <= 0x7E) & (c != 0x22) & (c != 0x23) & (c != 0x25) & (c != 0x3C)
        & (c != 0x3E) & ((c < 0x5B) | (c > 0x5E)) & (c != 0x60) & ((c < 0x7B) | (c > 0x7D));
}

// Every character of text is a plain path character. Addresses are long: eight characters are
// tested at once.
bool allPlainPathCharacters(QStringView text)
{
    using Lanes = quint16 __attribute__((vector_size(16)));
    constexpr qsizetype width = sizeof(Lanes) / sizeof(quint16);
    const char16_t *const data = text.utf16();
    qsizetype at = 0;
    for (; at + width <= text.size(); at += width) {
        Lanes lanes;
        std::memcpy(&lanes, data + at, sizeof lanes);
        const auto plain = plainInPath(lanes);
        quint64 halves[2];
        std::memcpy(halves, &plain, sizeof halves);
        if ((halves[0] & halves[1]) != ~quint64(0))
            return false;
    }
    for (; at < text.size(); ++at) {
        if (!plainInPath(data[at]))
            return false;
    }
    return true;
}

// A label of a host name that QUrl keeps unchanged: not empty, not over 63 characters, not
// starting or ending with "-", and no punycode.
bool isPlainLabel(QStringView label)
{
    return !label.isEmpty() && label.size() <= 63 && label.front() != u'-' && label.back() != u'-'
        && !startsWithAscii(label, u"xn--");
}

bool isPlainPort(QStringView port)
{
    if (port.isEmpty() || port.size() > 5 || port.front() == u'0')
        return false;
    int value = 0;
    for (QChar c : port) {
        if (c < u'0' || c > u'9')
            return false;
        value = value * 10 + (c.unicode() - u'0');
    }
    return value <= 65535;
}

// Whether the text is a plain address: see encodedPlainAddress.
bool isPlainAddress(QStringView text)
{
    qsizetype authorityStart = 0;
    if (startsWithAscii(text, u"http://"))
        authorityStart = 7;
    else if (startsWithAscii(text, u"https://"))
        authorityStart = 8;
    else
        return false;

    // The host, read in one pass up to a ":" or the path: lower-case labels between dots. QUrl
    // reads a host whose labels are all numbers, in any base ("0x7f000001", "0177.1", "127.1"),
    // as an IPv4 address: a host whose labels all begin with a digit is left to it.
    const char16_t *const data = text.utf16();
    const qsizetype size = text.size();
    qsizetype at = authorityStart;
    qsizetype labelStart = at;
    bool everyLabelBeginsWithADigit = true;
    for (;; ++at) {
        const char16_t c = at < size ? data[at] : u'/';
        if (isLowerAlnum(c) || c == u'-')
            continue;
        if (c != u'.' && c != u':' && c != u'/' && c != u'?')
            return false;
        const QStringView label = text.sliced(labelStart, at - labelStart);
        if (!isPlainLabel(label))
            return false;
        everyLabelBeginsWithADigit &= label.front() >= u'0' && label.front() <= u'9';
        if (c != u'.')
            break;
        labelStart = at + 1;
    }
    if (at - authorityStart > 253 || everyLabelBeginsWithADigit)
        return false;
    if (at < size && data[at] == u':') {
        const qsizetype portStart = at + 1;
        at = portStart;
        while (at < size && data[at] != u'/' && data[at] != u'?')
            ++at;
        if (!isPlainPort(text.sliced(portStart, at - portStart)))
            return false;
    }
    return allPlainPathCharacters(text.sliced(at));
}

// Whether a path has a "." or ".." segment, which resolving removes.
bool hasDotSegment(QStringView path)
{
    qsizetype segmentStart = 0;
    for (qsizetype at = 0; at <= path.size(); ++at) {
        if (at < path.size() && path[at] != u'/')
            continue;
        const QStringView segment = path.sliced(segmentStart, at - segmentStart);
        if (segment == u"." || segment == u"..")
            return true;
        segmentStart = at + 1;
    }
    return false;
}

} // namespace

QByteArray plainBaseDirectory(const QUrl &base)
{
    if (!base.isValid() || base.isRelative() || !base.path().startsWith(u'/'))
        return {};
    const QUrl directory
        = base.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment | QUrl::RemoveFilename);
    if (hasDotSegment(directory.path(QUrl::FullyEncoded)))
        return {};
    return encoded(directory);
}

bool encodePlainRelative(QStringView text, QByteArrayView directory, QByteArray &into)
{
    if (directory.isEmpty() || text.isEmpty() || text.front() == u'/' || text.front() == u'?'
        || !allPlainPathCharacters(text))
        return false;
    const qsizetype query = text.indexOf(u'?');
    const QStringView path = query < 0 ? text : text.first(query);
    // A colon before the first slash makes the text an address of its own scheme.
    const qsizetype colon = path.indexOf(u':');
    if ((colon >= 0 && (colon < path.indexOf(u'/') || !path.contains(u'/'))) || hasDotSegment(path))
        return false;
    into.resize(directory.size() + text.size());
    char *out = into.data();
    std::memcpy(out, directory.data(), size_t(directory.size()));
    out += directory.size();
    for (const QChar c : text)
        *out++ = char(c.unicode());
    return true;
}

bool encodePlainAddress(QStringView text, QByteArray &into)
{
    if (!isPlainAddress(text))
        return false;
    into.resize(text.size());
    char *out = into.data();
    for (const QChar c : text)
        *out++ = char(c.unicode());
    return true;
}

std::optional<QByteArray> encodedPlainAddress(QStringView text)
{
    QByteArray bytes;
    if (!encodePlainAddress(text, bytes))
        return std::nullopt;
    return bytes;
}

QByteArray encoded(const QUrl &url)
{
    // QUrl converts in place and keeps a buffer twice the size; playlists hold many addresses.
    const QByteArray bytes = url.toEncoded();
    return QByteArray(bytes.constData(), bytes.size());
}

std::optional<QUrl> parse(QStringView text)
{
    QUrl url(text.toString(), QUrl::TolerantMode);
    if (!url.isValid())
        return std::nullopt;
    return url;
}

std::optional<QUrl> parse(QStringView text, const QUrl &base)
{
    std::optional<QUrl> url = parse(text);
    if (url && url->isRelative() && !base.isEmpty()) {
        QUrl resolved = base.resolved(*url);
        if (!resolved.isValid())
            return std::nullopt;
        return resolved;
    }
    return url;
}

QString lastPathComponent(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyEncoded);
    return lastSegment(path).toString();
}

QString pathExtension(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyDecoded);
    return extensionOf(lastSegment(path)).toString();
}

QString deletingPathExtension(const QString &component)
{
    const QStringView extension = extensionOf(component);
    if (extension.isEmpty())
        return component;
    return component.first(component.size() - extension.size() - 1);
}

QStringList pathComponents(const QUrl &url)
{
    return url.path(QUrl::FullyDecoded).split(u'/', Qt::SkipEmptyParts);
}

QList<QueryItem> queryItems(const QUrl &url)
{
    QList<QueryItem> items;
    if (!url.hasQuery())
        return items;
    const QString query = url.query(QUrl::FullyEncoded);
    if (query.isEmpty())
        return items;
    const auto decoded = [](QStringView part) {
        return removingPercentEncoding(part).value_or(part.toString());
    };
    for (QStringView item : QStringView(query).split(u'&')) {
        const qsizetype equals = item.indexOf(u'=');
        if (equals < 0)
            items.append({decoded(item), std::nullopt});
        else
            items.append({decoded(item.first(equals)), decoded(item.sliced(equals + 1))});
    }
    return items;
}

std::optional<QString> removingPercentEncoding(QStringView text)
{
    if (!text.contains(u'%'))
        return text.toString();
    QByteArray bytes;
    bytes.reserve(text.size());
    qsizetype runStart = 0; // start of the text since the last escape
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'%')
            continue;
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.append(text.sliced(runStart, i - runStart).toUtf8());
        bytes.append(char(high * 16 + low));
        i += 2;
        runStart = i + 1;
    }
    bytes.append(text.sliced(runStart).toUtf8());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString result = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return result;
}

} // namespace UrlParts
