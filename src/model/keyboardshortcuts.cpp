#include "keyboardshortcuts.h"

#include <optional>

namespace KeyboardShortcuts {

namespace {
std::optional<double> arrowStep(Qt::KeyboardModifiers modifiers)
{
    const bool command = modifiers.testFlag(Qt::ControlModifier);
    const bool option = modifiers.testFlag(Qt::AltModifier);
    if (command && option)
        return 300;
    if (command)
        return 60;
    if (option)
        return 20;
    if (modifiers & (Qt::ShiftModifier | Qt::MetaModifier))
        return std::nullopt;
    return 5;
}
} // namespace

Action action(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat, bool textFieldFocused)
{
    if (autoRepeat || textFieldFocused)
        return PassOn {};
    // Arrow keys carry the keypad flag on some keyboards; it is not a modifier a user holds.
    modifiers &= ~Qt::KeypadModifier;
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const std::optional<double> step = arrowStep(modifiers);
        if (!step)
            return PassOn {};
        return Skip {key == Qt::Key_Left ? -*step : *step};
    }
    case Qt::Key_K:
        if (modifiers.testFlag(Qt::ControlModifier))
            return Stop {};
        return PassOn {};
    case Qt::Key_Space:
        return TogglePlayback {};
    default:
        return PassOn {};
    }
}

} // namespace KeyboardShortcuts
