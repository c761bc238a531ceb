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

// The keys desktop players share; a focused list keeps its arrows, which move through it.
Action desktopAction(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat,
                     const Context &context)
{
    if (context.listFocused && (key == Qt::Key_Up || key == Qt::Key_Down))
        return PassOn {};
    // "#" takes Shift on most layouts.
    if (key == Qt::Key_NumberSign && (modifiers & ~Qt::ShiftModifier) == Qt::NoModifier)
        return autoRepeat ? Action(PassOn {}) : Action(CycleTrack {TrackKind::audio});
    if (modifiers != Qt::NoModifier)
        return PassOn {};
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        // Held down, the volume keeps moving.
        return ChangeVolume {key == Qt::Key_Up ? volumeStep : -volumeStep};
    case Qt::Key_F:
    case Qt::Key_F11:
        return autoRepeat ? Action(PassOn {}) : Action(ToggleFullScreen {});
    case Qt::Key_Escape:
        return context.fullScreen && !autoRepeat ? Action(LeaveFullScreen {}) : Action(PassOn {});
    case Qt::Key_M:
        return autoRepeat ? Action(PassOn {}) : Action(ToggleMute {});
    case Qt::Key_J:
        return autoRepeat ? Action(PassOn {}) : Action(CycleTrack {TrackKind::subtitle});
    case Qt::Key_V:
        return autoRepeat ? Action(PassOn {}) : Action(ToggleSubtitles {});
    default:
        return PassOn {};
    }
}

Action action(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat, const Context &context)
{
    if (context.textFieldFocused)
        return PassOn {};
    // Arrow keys carry the keypad flag on some keyboards; it is not a modifier a user holds.
    modifiers &= ~Qt::KeypadModifier;
    // Held down, the channels go by; only the last one is opened.
    if ((key == Qt::Key_PageDown || key == Qt::Key_PageUp) && modifiers == Qt::NoModifier)
        return StepChannel {key == Qt::Key_PageDown ? 1 : -1};
    if (const Action desktop = desktopAction(key, modifiers, autoRepeat, context);
        !std::holds_alternative<PassOn>(desktop))
        return desktop;
    if (autoRepeat)
        return PassOn {};
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        if (context.sliderFocused)
            return PassOn {};
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
