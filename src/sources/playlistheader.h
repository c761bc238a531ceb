#pragma once
// What a playlist's #EXTM3U line says for all its channels: the programme guides it names
// (x-tvg-url or url-tvg, each a comma-separated list), the tvg-shift of every entry and the
// catch-up attributes an entry's own replace.
#include "catchupsettings.h"

#include <QByteArrayView>
#include <QList>
#include <QUrl>
#include <optional>

struct PlaylistHeader
{
    QList<QUrl> guides; // in the order listed, relative addresses resolved, no repeats
    std::optional<qint32> shiftSeconds;
    CatchupAttributes catchup;
    // The playlist is a file of this computer, so its guides may be files too.
    bool fromLocalFile = false;

    // The header of a playlist's bytes (UTF-8 or Latin-1, a UTF-8 mark skipped); an empty
    // header when the first line that is not blank is no #EXTM3U line.
    static PlaylistHeader read(QByteArrayView bytes, const QUrl &baseURL);
    // The same from a list's text.
    static PlaylistHeader read(QStringView text, const QUrl &baseURL);

    friend bool operator==(const PlaylistHeader &, const PlaylistHeader &) = default;
};
