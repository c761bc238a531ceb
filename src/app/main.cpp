#include "lumomediaplayerapp.h"
#include "model/playlistloader.h"
#include "singleinstance.h"

#include <QApplication>
#include <QDir>
#include <QStyle>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace {

int run(int argc, char *argv[])
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

    // A second launch (Open With, a terminal, the desktop entry) hands its file to the window
    // already open and ends.
    const QStringList arguments = QApplication::arguments().mid(1);
    SingleInstance instance;
    if (instance.claim(arguments, QDir::currentPath()) == SingleInstance::Role::handedOver)
        return 0;

    LumoMediaPlayerApp app;
    QObject::connect(&instance, &SingleInstance::openRequested, &app,
                     &LumoMediaPlayerApp::openFromLaunch);
    app.start(arguments);
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const int status = run(argc, argv);
    // A playlist read blocked by its file system is left running; the static destructors must
    // not run under it. Everything of the application's own is closed by now.
    if (PlaylistLoader::unfinishedWork() > 0) {
        std::fflush(nullptr);
        std::quick_exit(status);
    }
    return status;
}
