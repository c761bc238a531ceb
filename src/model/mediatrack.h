#pragma once
// One audio or subtitle track of the current item, as the player lists it.
#include <QList>
#include <QString>
#include <QtGlobal>

enum class TrackKind {
    audio,
    subtitle,
};

struct MediaTrack
{
    TrackKind kind = TrackKind::audio;
    qint64 id = 0; // the player's number for the track, unique within its kind
    QString language; // as the file tags it ("eng", "fr", "fre"); empty when untagged
    QString title; // the file's own name for the track; may be empty
    QString codec; // the player's codec name ("aac", "subrip")
    int channelCount = 0; // audio only; 0 when unknown
    bool isDefault = false;
    bool isForced = false;
    bool isExternal = false; // loaded from a file of its own
    bool isSelected = false;

    friend bool operator==(const MediaTrack &, const MediaTrack &) = default;
};

using MediaTracks = QList<MediaTrack>;
