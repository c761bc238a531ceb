#pragma once
// Keeps the window on its screen: every size the window is given is bounded by the screen's
// available area (fitting wins over the minimum sizes), and the window moves back inside it.
#include <QRect>
#include <QSize>

class QWidget;

namespace WindowFit {

// frame moved as little as it can to lie within available; a frame larger than available
// keeps its top-left corner inside it.
QRect keptInside(QRect frame, QRect available);
// The largest content a window can show on available when chrome (its frame, menu bar and
// everything else around the content) surrounds it.
QSize largestContent(QSize available, QSize chrome);

// What surrounds content in window, the window manager's frame included.
QSize chrome(const QWidget *window, const QWidget *content);
// The available area of the window's screen; empty without a screen.
QRect availableArea(const QWidget *window);
// Resizes window so that content gets size, bounded by the available area, lowering the
// window's minimum when it has to, and moves the window back on screen. Returns the content
// size asked for.
QSize resizeContent(QWidget *window, QWidget *content, QSize size);

} // namespace WindowFit
