#pragma once

// Turns the text of an M3U/M3U8 channel list into its channels, in file order. Never fails: text
// with no playable address gives no entry, which callers report as PlaylistError::empty.

#include "playlistentry.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>
#include <stop_token>

class PlaylistParser
{
public:
    // Relative addresses are resolved against baseURL, the playlist's own address.
    static QList<PlaylistEntry> parse(QStringView text, const QUrl &baseURL);
    // Called with each stretch of the bytes once all its lines are read, a megabyte or so at a
    // time, from the parsing threads and possibly from two at once: a caller that mapped a file
    // can let go of those pages. The stretches are disjoint and cover the bytes; a list that
    // turns out not to be UTF-8 is read again as Latin-1 and its stretches are reported again.
    using BytesRead = std::function<void(QByteArrayView read)>;

    // The same from the playlist's bytes, read as decodePlaylistText reads them (UTF-8, else
    // Latin-1) but a line at a time, so the whole text is never held in UTF-16. Once stop is
    // requested (checked every few thousand lines) the parse ends early with what it has.
    static QList<PlaylistEntry> parse(QByteArrayView bytes, const QUrl &baseURL,
                                      const BytesRead &bytesRead = {},
                                      const std::stop_token &stop = {});

    // The trimmed value of name="..." in an #EXTINF line; the name is matched case-insensitively
    // anywhere in the line. Nothing when missing, unterminated or empty.
    static std::optional<QString> attribute(QStringView name, QStringView line);

    // The country in a tvg-id such as "cnn.us" or "One.uk@SD": the last dot-separated piece
    // before the "@", when it is two characters long.
    static std::optional<QString> inferredCountryCode(const std::optional<QString> &tvgID);

    // The first piece of a list such as "us;ca" or "de, at", upper-cased, when it is two
    // characters long.
    static std::optional<QString> normalizedCountryCode(QStringView value);
};
