// lumo-serve FOLDER [PORT]: serves a folder on 127.0.0.1 and prints the port it listens on.
#include "localhttpserver.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2 || !QFileInfo(arguments[1]).isDir()) {
        std::fputs("usage: lumo-serve FOLDER [PORT]\n", stderr);
        return 2;
    }
    LocalHttpServer server;
    server.serveDirectory(arguments[1]);
    if (!server.listen(quint16(arguments.value(2).toUInt()))) {
        std::fputs("lumo-serve: cannot listen on 127.0.0.1\n", stderr);
        return 1;
    }
    std::printf("%u\n", unsigned(server.port()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
