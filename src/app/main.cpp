#include "lumomediaplayerapp.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("LumoMediaPlayer"));
    QApplication::setApplicationDisplayName(QStringLiteral("LumoMediaPlayerPro"));
    QApplication::setApplicationVersion(QStringLiteral(LUMO_VERSION));

    LumoMediaPlayerApp app;
    app.start(QApplication::arguments().mid(1));
    return QApplication::exec();
}
