#pragma once
// Addresses that QUrl would keep exactly as written, encoded without QUrl: playlists are mostly
// made of them, and parsing each with QUrl costs more than the rest of reading its line. Each
// reading is given as UTF-16 and as ASCII bytes (a playlist's line before it is widened).

#include <QByteArray>
#include <QStringView>
#include <QUrl>

#include <optional>

namespace PlainAddress {

// The fully encoded form of text, when text is a plain absolute http or https address that QUrl
// keeps byte for byte: lower-case scheme and host name, an optional port without leading
// zeros, and only characters that need no encoding. Nothing otherwise (the caller then uses
// UrlParts::parse()).
std::optional<QByteArray> encoded(QStringView text);
// The same into a buffer reused from address to address; false, the buffer untouched, when the
// text is not such an address.
bool encode(QStringView text, QByteArray &into);
bool encode(QByteArrayView ascii, QByteArray &into);

// The folder of a base address, fully encoded, that plain relative paths are appended to:
// "http://h/a/" for "http://h/a/list.m3u?x=1". Empty when resolving against the base is more
// than appending: no path, or a path with "." or ".." segments.
QByteArray baseDirectory(const QUrl &base);
// The fully encoded form of text resolved against such a folder, when text is a relative path
// that resolving leaves as written: only characters that need no encoding, no scheme, not
// starting with "/" or "?", and no "." or ".." segments. False, the buffer untouched,
// otherwise (the caller then uses UrlParts::parse()). Provider lists often hold such paths.
bool encodeRelative(QStringView text, QByteArrayView directory, QByteArray &into);
bool encodeRelative(QByteArrayView ascii, QByteArrayView directory, QByteArray &into);

} // namespace PlainAddress
