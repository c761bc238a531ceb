#pragma once

// The two ways a playlist can fail to give channels, each with its user-facing text.

#include <QString>

enum class PlaylistError { invalidEncoding, empty };

QString playlistErrorDescription(PlaylistError error);
