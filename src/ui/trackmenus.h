#pragma once
// The "Audio Track" and "Subtitles" menus, rebuilt from the current item's tracks whenever they
// change; the Playback menu and the control bar's track button show the same ones.
#include "model/mediatrack.h"

class PlayerModel;
class QMenu;

namespace TrackMenus {

inline constexpr QStringView audioTitle = u"Audio Track";
inline constexpr QStringView subtitlesTitle = u"Subtitles";
inline constexpr QStringView subtitlesOff = u"Off";
inline constexpr QStringView loadSubtitles = u"Load Subtitle File…";

// Keeps menu filled with the model's tracks of kind, the selected one checked, and enabled only
// while there is something to choose: subtitles start with "Off" and end with "Load Subtitle
// File…", which stays available while a video plays.
void follow(QMenu *menu, PlayerModel &model, TrackKind kind);

// Whether the item has enough tracks for a menu worth a button: several sounds, or subtitles.
bool worthAButton(const MediaTracks &tracks);

} // namespace TrackMenus
