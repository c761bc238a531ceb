#pragma once
// What several lumo-cli commands read from their arguments: moments and playlists.
#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>

// A moment written with its zone ("2026-11-25T20:00:00Z", "…+01:00"), in seconds since the
// epoch; nothing without a zone, which would mean a different moment on every machine.
std::optional<qint64> momentWithZone(const QString &text);

struct PlaylistInput
{
    QByteArray bytes;
    QUrl baseURL; // the file, or the --base address it is read as coming from
};

// Reads the playlist file, as if it came from base when one is given. On failure says why on
// standard error and gives the exit status in status.
std::optional<PlaylistInput> readPlaylistInput(const QString &path,
                                               const std::optional<QString> &base, int &status);

void writeErr(const QString &text);
