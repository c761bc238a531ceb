#pragma once
// Activates windows the way the window system does (a window manager, or the X server's input
// focus when there is none), and waits until Qt has seen it.
class QWidget;

namespace WindowActivation {

// Makes window's top-level window the active one; false when it did not become active in 5 s.
bool activate(QWidget *window);
// Leaves none of the test's windows active: a small window of its own takes the focus and
// goes away with it.
bool deactivateAll();

} // namespace WindowActivation
