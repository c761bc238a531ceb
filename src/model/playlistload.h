#pragma once
// Turning playlist bytes into channels: decode, parse, and report a playlist without channels.
// Pure and thread-safe, so that large playlists can be read off the main thread.
#include "sources/channelindex.h"
#include "sources/playlistentry.h"
#include "sources/playlistheader.h"
#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <memory>
#include <stop_token>

struct PlaylistLoadResult
{
    QList<PlaylistEntry> entries;
    QString error; // the error's description; null on success
    // The entries prepared for the channel search and menus; null on error. Built with the
    // parse, so that the interface thread never walks the whole list.
    std::shared_ptr<const ChannelIndex> index;
    PlaylistHeader header; // the guides and shift its first line names

    static PlaylistLoadResult failure(QString error) { return {{}, std::move(error), nullptr, {}}; }
};

// Twice the largest playlist we measure (200,000 channels, 63 MB) and far above real channel
// lists; loading needs about three times the body in memory (the bytes, the text, the
// channels), so this bounds a hostile body to well under a gigabyte.
inline constexpr qint64 maxPlaylistBytes = 128 * 1024 * 1024;

// "The playlist is larger than 128 MB."
QString playlistTooLargeDescription(qint64 maxBytes);

// Both give up, with a failure nobody is meant to see, soon after stop is requested: the
// parse and the index check it every few thousand entries.
PlaylistLoadResult loadPlaylist(const QByteArray &bytes, const QUrl &baseURL,
                                const std::stop_token &stop = {});

// Reads a local playlist file (at most maxBytes) and loads it.
PlaylistLoadResult loadPlaylistFile(const QString &path, qint64 maxBytes,
                                    const std::stop_token &stop = {});

// The failure of a load given up.
QString playlistLoadStoppedDescription();
