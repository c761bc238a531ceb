#pragma once
// Keeps the window's shape through the user's own resizes: on X11 the window manager is told the
// picture's aspect in WM_NORMAL_HINTS, measured without the menu bar and the control bar (the
// hints' base size), so that a hand-resized window still shows the whole picture.
#include <QSize>
#include <array>
#include <cstdint>

class QWidget;

namespace WindowAspectHint {

// ICCCM's WM_SIZE_HINTS: eighteen 32-bit fields.
using SizeHints = std::array<std::uint32_t, 18>;

// hints with the aspect set to that of picture (both limits alike) measured beyond base, or
// cleared with an empty picture. Every other field is kept.
SizeHints withAspect(SizeHints hints, QSize picture, QSize base);

// Whether the platform carries the hint (X11). Elsewhere (Wayland has no protocol for it) the
// window's shape is corrected once a resize by hand has ended.
bool isAvailable();

// Applies it to window's WM_NORMAL_HINTS; nothing on other platforms. Qt rewrites the hints when
// it resizes the window or changes its limits, so this is called again after those.
void apply(QWidget *window, QSize picture, QSize base);

} // namespace WindowAspectHint
