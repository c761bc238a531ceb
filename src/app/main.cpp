#include "lumomediaplayerapp.h"

#include <QApplication>
#include <QStyle>

#include <unistd.h>

int main(int argc, char *argv[])
{
    // The web player and the video view both draw with OpenGL in one window.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // Chromium refuses to run as root inside its sandbox; only then is the sandbox left off.
    if (geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("LumoMediaPlayer"));
    QApplication::setApplicationDisplayName(QStringLiteral("LumoMediaPlayerPro"));
    QApplication::setApplicationVersion(QStringLiteral(LUMO_VERSION));
    // The controls are drawn dark on light faces; a dark desktop theme must not invert them.
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(QApplication::style()->standardPalette());

    LumoMediaPlayerApp app;
    app.start(QApplication::arguments().mid(1));
    return QApplication::exec();
}
