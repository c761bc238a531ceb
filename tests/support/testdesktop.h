#pragma once
// The desktop around a window test: a real window manager (openbox) on the test display,
// xdotool for input the X server delivers, and the folder screenshots are saved to.
#include <QProcess>
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

    // False when openbox or xdotool is missing or openbox did not keep running.
    bool start();

private:
    QProcess m_process;
};

// Runs xdotool with the arguments; true when it succeeded.
bool xdotool(const QStringList &arguments);

// Saves what widget shows as build/screenshots/name.png.
void saveScreenshot(QWidget &widget, const QString &name);

} // namespace TestDesktop
