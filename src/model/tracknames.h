#pragma once
// How a track is named in the menus and notices: the language's English name, the file's own
// title in quotes and a technical hint, as in: French "Commentary" (AAC stereo).
#include "mediatrack.h"

#include <QString>

namespace TrackNames {

// The English name of an ISO 639 code (two or three letters, either form); the code itself when
// it names no language; "Unknown" when there is none.
QString languageName(const QString &code);

// "(AAC stereo)", "(SubRip)": the codec's usual name, and for sound its channels; empty when
// nothing is known.
QString hint(const MediaTrack &track);

// The menu item of a track.
QString label(const MediaTrack &track);

// What a notice calls the track: its language, else its title, else its number.
QString shortName(const MediaTrack &track);

} // namespace TrackNames
