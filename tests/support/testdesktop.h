#pragma once
// The desktop around a window test: a real window manager (openbox) on the test display,
// xdotool for input the X server delivers, and the folder screenshots are saved to.
#include <QProcess>
#include <QSize>
#include <QStringList>

class QWidget;

namespace TestDesktop {

// openbox for the life of this object, on the test display.
class WindowManager final
{
public:
    WindowManager() = default;
    ~WindowManager();
    WindowManager(const WindowManager &) = delete;
    WindowManager &operator=(const WindowManager &) = delete;

    // False when openbox or xdotool is missing or openbox did not keep running. A bottom
    // margin leaves that much of the screen out of its available area, as a panel does.
    bool start(int bottomMargin = 0);

private:
    QProcess m_process;
    QString m_config;
};

// A private Wayland compositor (weston, headless) for the life of this object. Made before the
// application, so that Qt connects to it: start() points WAYLAND_DISPLAY and QT_QPA_PLATFORM at
// it, in a runtime folder of its own.
class WaylandCompositor final
{
public:
    WaylandCompositor() = default;
    ~WaylandCompositor();
    WaylandCompositor(const WaylandCompositor &) = delete;
    WaylandCompositor &operator=(const WaylandCompositor &) = delete;

    // False when weston is missing or its socket did not come; the reason goes to stderr.
    bool start(QSize screen);

private:
    qint64 m_pid = 0;
    QString m_runtime;
};

// Runs xdotool with the arguments; true when it succeeded.
bool xdotool(const QStringList &arguments);

// Saves what widget shows as build/screenshots/name.png.
void saveScreenshot(QWidget &widget, const QString &name);

} // namespace TestDesktop
