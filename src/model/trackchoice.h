#pragma once
// Which track plays when an item starts, and where the track keys go next. Nothing is
// remembered: the file and the system's language decide.
#include "mediatrack.h"

#include <QLocale>
#include <optional>

namespace TrackChoice {

// The tracks of one kind, in the file's order.
MediaTracks ofKind(const MediaTracks &tracks, TrackKind kind);

// The track of kind to start with: one flagged forced or default wins; with none flagged, the
// first in the system's language; otherwise the first. Nothing when the item has no such track.
std::optional<qint64> initial(const MediaTracks &tracks, TrackKind kind,
                              QLocale::Language systemLanguage);

// The track after the selected one, wrapping. Sound always has one while any exists; subtitles
// pass through "off" (nothing) after the last.
std::optional<qint64> next(const MediaTracks &tracks, TrackKind kind);

// The selected track of kind, if any.
std::optional<MediaTrack> selected(const MediaTracks &tracks, TrackKind kind);

} // namespace TrackChoice
