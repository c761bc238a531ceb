#pragma once
// The player's keyboard rules, as a pure function of one key press.
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
using Action = std::variant<PassOn, Skip, Stop, TogglePlayback>;

// Command is Qt::ControlModifier (the command key on macOS), Option Qt::AltModifier and
// Control Qt::MetaModifier. A focused text field keeps every key it is typing.
Action action(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat, bool textFieldFocused);

} // namespace KeyboardShortcuts
