#pragma once

// Readings of an address that the player's rules rely on, with the semantics users of the
// macOS build get from Foundation's URL and URLComponents, built on QUrl.

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace UrlParts {

struct QueryItem
{
    QString name;
    std::optional<QString> value; // absent when the item has no "="

    friend bool operator==(const QueryItem &, const QueryItem &) = default;
};

// Parses text as an address. Characters a strict parser rejects (spaces, non-ASCII, stray "%")
// are percent-encoded rather than refused, as Foundation does since macOS 14; what still cannot
// be an address (a bad host, a bad port, unbalanced IPv6 brackets) gives nothing.
std::optional<QUrl> parse(QStringView text);

// The fully encoded form of text, without QUrl, when text is a plain absolute http or https
// address that QUrl keeps byte for byte: lower-case scheme and host name, an optional port
// without leading zeros, and only characters that need no encoding. Nothing otherwise (the
// caller then uses parse()). Playlists are mostly made of such addresses.
std::optional<QByteArray> encodedPlainAddress(QStringView text);
// The same into a buffer reused from address to address; false, the buffer untouched, when the
// text is not such an address.
bool encodePlainAddress(QStringView text, QByteArray &into);

// The folder of a base address, fully encoded, that plain relative paths are appended to:
// "http://h/a/" for "http://h/a/list.m3u?x=1". Empty when resolving against the base is more
// than appending: no path, or a path with "." or ".." segments.
QByteArray plainBaseDirectory(const QUrl &base);
// The fully encoded form of text resolved against such a folder, without QUrl, when text is a
// relative path that resolving leaves as written: only characters that need no encoding, no
// scheme, not starting with "/" or "?", and no "." or ".." segments. False, the buffer
// untouched, otherwise (the caller then uses parse()). Provider lists often hold such paths.
bool encodePlainRelative(QStringView text, QByteArrayView directory, QByteArray &into);

// The fully encoded form of a parsed address, in a buffer of exactly its size.
QByteArray encoded(const QUrl &url);

// As parse(), then resolved against base when the text is a relative reference. An absolute
// text is kept exactly as written (dot segments are not removed).
std::optional<QUrl> parse(QStringView text, const QUrl &base);

// The last segment of the percent-encoded path; trailing slashes are ignored. Empty for an
// empty path or a path made only of slashes (where Foundation answers "/"), so that callers
// fall back to the host, as "http://h/" is named "h".
QString lastPathComponent(const QUrl &url);

// The extension of the decoded path's last component, without the dot, as written. Empty when
// the component has no dot, starts with "..", ends with a dot, or its only dot is the first
// character, or when the extension holds a space or a direction mark.
QString pathExtension(const QUrl &url);

// The component without its extension and dot, by the rule of pathExtension(); unchanged when it
// has none.
QString deletingPathExtension(const QString &component);

// The decoded path split at "/", without the root and without empty segments.
QStringList pathComponents(const QUrl &url);

// The query split at "&", each item at its first "="; names and values percent-decoded ("+" is
// not a space). No query gives no items.
QList<QueryItem> queryItems(const QUrl &url);

// Percent-decodes text; nothing when a "%" is not followed by two hex digits or the decoded
// bytes are not valid UTF-8.
std::optional<QString> removingPercentEncoding(QStringView text);

} // namespace UrlParts
