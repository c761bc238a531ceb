#pragma once
// Full screen on and off for a top-level window. Only the full-screen flag of the window state
// changes, so a maximised window comes back maximised (showNormal would forget it).
#include <QWidget>

inline void toggleFullScreen(QWidget *window)
{
    window->setWindowState(window->windowState() ^ Qt::WindowFullScreen);
}
