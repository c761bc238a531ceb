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
