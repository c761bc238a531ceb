#pragma once
// The audio and subtitle tracks of mpv's "track-list" property.
#include "mediatrack.h"

struct mpv_node;

namespace MpvTracks {

// The audio and subtitle entries of a track list, in its order; video and anything unreadable
// are left out.
MediaTracks fromNode(const mpv_node &trackList);

} // namespace MpvTracks
