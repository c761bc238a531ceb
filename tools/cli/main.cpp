// lumo-cli: diagnostics for what the player makes of an address or a playlist.

#include "catchupcommand.h"
#include "classifycommand.h"
#include "facesprogram.h"
#include "guidecommand.h"
#include "pagecommand.h"
#include "parsecommand.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr const char *usage = "usage:\n"
                              "  lumo-cli classify TEXT\n"
                              "  lumo-cli parse-m3u FILE [--base ADDRESS] [--count]\n"
                              "  lumo-cli page ADDRESS [--origin ORIGIN]\n"
                              "  lumo-cli guide PLAYLIST [GUIDE...] --at ISO8601 [--base ADDRESS]\n"
                              "  lumo-cli faces IMAGE...\n"
                              "  lumo-cli catchup PLAYLIST --channel N --start ISO8601 "
                              "--stop ISO8601 --now ISO8601\n";

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fputs(usage, stderr);
        return 2;
    }
    const QString command = arguments.first();
    if (command == u"classify") {
        if (arguments.size() != 2) {
            std::fputs(usage, stderr);
            return 2;
        }
        const QByteArray json = classificationJson(arguments[1]);
        std::printf("%s\n", json.constData());
        return 0;
    }
    if (command == u"parse-m3u")
        return runParseCommand(arguments.mid(1));
    if (command == u"guide")
        return runGuideCommand(arguments.mid(1));
    if (command == u"catchup")
        return runCatchupCommand(arguments.mid(1));
    if (command == u"faces")
        return runFacesProgram(arguments.mid(1));
    if (command == u"page")
        return runPageCommand(arguments.mid(1));
    std::fputs(usage, stderr);
    return 2;
}
