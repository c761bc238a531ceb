#pragma once
// The player's keyboard rules, as a pure function of one key press.
#include "mediatrack.h"

#include <Qt>
#include <variant>

namespace KeyboardShortcuts {

struct PassOn
{
    friend bool operator==(PassOn, PassOn) = default;
};
struct Skip
{
    double seconds;
    friend bool operator==(Skip, Skip) = default;
};
struct Stop
{
    friend bool operator==(Stop, Stop) = default;
};
struct TogglePlayback
{
    friend bool operator==(TogglePlayback, TogglePlayback) = default;
};
struct ToggleFullScreen
{
    friend bool operator==(ToggleFullScreen, ToggleFullScreen) = default;
};
struct LeaveFullScreen
{
    friend bool operator==(LeaveFullScreen, LeaveFullScreen) = default;
};
struct ToggleMute
{
    friend bool operator==(ToggleMute, ToggleMute) = default;
};
struct ChangeVolume
{
    double by; // a fraction of full volume
    friend bool operator==(ChangeVolume, ChangeVolume) = default;
};
// The next audio track, or the next subtitle track (through "off").
struct CycleTrack
{
    TrackKind kind;
    friend bool operator==(CycleTrack, CycleTrack) = default;
};
struct ToggleSubtitles
{
    friend bool operator==(ToggleSubtitles, ToggleSubtitles) = default;
};
// The next (+1) or previous (-1) channel of the list as shown.
struct StepChannel
{
    int step;
    friend bool operator==(StepChannel, StepChannel) = default;
};
using Action = std::variant<PassOn, Skip, Stop, TogglePlayback, ToggleFullScreen, LeaveFullScreen,
                            ToggleMute, ChangeVolume, CycleTrack, ToggleSubtitles, StepChannel>;

// What the keys go to when pressed.
struct Context
{
    bool textFieldFocused = false; // keeps every key it is typing
    bool listFocused = false; // keeps its arrows; letters stay the player's
    bool fullScreen = false;
    bool sliderFocused = false; // keeps ← and →, which move it
};

// The step of the volume keys and of one notch of the mouse wheel.
inline constexpr double volumeStep = 0.05;

// Command is Qt::ControlModifier (the command key on macOS), Option Qt::AltModifier and
// Control Qt::MetaModifier. Besides the player's own keys, the desktop's: F and F11 toggle full
// screen, Esc leaves it, M mutes, Up and Down change the volume; and mpv's track keys: # cycles
// the audio tracks, J the subtitles, V shows or hides them; and the zapping keys of IPTV apps:
// Page Down and Page Up play the next and previous channel, the channel list focused or not.
Action action(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat, const Context &context);

} // namespace KeyboardShortcuts
