#include "pagecommand.h"

#include "sources/youtubecontent.h"
#include "webplayer/youtubepage.h"

#include <cstdio>

int runPageCommand(const QStringList &arguments)
{
    QString address;
    QString origin = YouTubePage::webOrigin();
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == u"--origin" && i + 1 < arguments.size()) {
            const auto given = YouTubePage::httpsOrigin(arguments[++i]);
            if (!given) {
                std::fprintf(stderr, "lumo-cli: the origin must be an https origin\n");
                return 2;
            }
            origin = *given;
        } else if (address.isEmpty()) {
            address = arguments[i];
        } else {
            std::fprintf(stderr, "usage: lumo-cli page ADDRESS [--origin ORIGIN]\n");
            return 2;
        }
    }
    const auto content = YouTubeContent::fromUrl(QUrl(address.trimmed()));
    if (!content) {
        std::fprintf(stderr, "lumo-cli: not a video-service address: %s\n",
                     qUtf8Printable(address));
        return 1;
    }
    const QByteArray page = YouTubePage::html(*content, origin).toUtf8();
    std::fwrite(page.constData(), 1, size_t(page.size()), stdout);
    return 0;
}
