#include "guidecommand.h"

#include "guide/guideaddress.h"
#include "model/guideloader.h"
#include "sources/playlisterror.h"
#include "sources/playlistheader.h"
#include "sources/playlistparser.h"

#include "commandinput.h"
#include "orderedjson.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QTimeZone>

#include <cstdio>

namespace {

constexpr const char *usage = "usage: lumo-cli guide PLAYLIST [GUIDE...] --at ISO8601 "
                              "[--base ADDRESS]\n"
                              "  --at takes a moment with its zone, such as "
                              "2026-11-25T20:00:00Z or 2026-11-25T21:00:00+01:00\n";

QString utcText(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
        .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
}

QByteArray programmeJson(const std::optional<ProgrammeGuide::Programme> &programme)
{
    if (!programme)
        return "null";
    return toCompactJson({
        {QStringLiteral("title"), programme->title},
        {QStringLiteral("start"), utcText(programme->start)},
        {QStringLiteral("stop"), utcText(programme->stop)},
    });
}

} // namespace

int runGuideCommand(const QStringList &arguments)
{
    QString playlistPath;
    QStringList guideArguments;
    std::optional<QString> at;
    std::optional<QString> base;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == u"--at" || arguments[i] == u"--base") {
            if (i + 1 >= arguments.size()) {
                std::fputs(usage, stderr);
                return 2;
            }
            (arguments[i] == u"--at" ? at : base) = arguments[i + 1];
            ++i;
        } else if (playlistPath.isEmpty()) {
            playlistPath = arguments[i];
        } else {
            guideArguments.append(arguments[i]);
        }
    }
    if (playlistPath.isEmpty() || !at) {
        std::fputs(usage, stderr);
        return 2;
    }
    const std::optional<qint64> moment = momentWithZone(*at);
    if (!moment) {
        writeErr(QStringLiteral("lumo-cli: --at needs a moment with its zone (Z or ±HH:MM): %1")
                     .arg(*at));
        std::fputs(usage, stderr);
        return 2;
    }

    int status = 0;
    const std::optional<PlaylistInput> input = readPlaylistInput(playlistPath, base, status);
    if (!input)
        return status;
    const QByteArray &bytes = input->bytes;
    const QUrl &baseURL = input->baseURL;
    const QList<PlaylistEntry> entries = PlaylistParser::parse(QByteArrayView(bytes), baseURL);
    if (entries.isEmpty()) {
        writeErr(playlistErrorDescription(PlaylistError::empty));
        return 1;
    }
    const PlaylistHeader header = PlaylistHeader::read(bytes, baseURL);

    GuideLoader::Request request;
    request.entries = entries;
    request.playlistShift = header.shiftSeconds;
    request.moment = *moment;
    if (guideArguments.isEmpty()) {
        request.guides = header.guides;
        if (!header.fromLocalFile)
            request.networkOnly = header.guides;
    } else {
        for (const QString &argument : guideArguments) {
            const std::optional<QUrl> url = GuideAddress::fromText(argument);
            if (!url) {
                writeErr(QStringLiteral("lumo-cli: not a guide file or http/https address: %1")
                             .arg(argument));
                return 2;
            }
            request.guides.append(*url);
        }
    }

    GuideLoader::Result result;
    {
        GuideLoader loader;
        QEventLoop loop;
        loader.load(request, &loop, [&](const GuideLoader::Result &loaded) {
            if (!loaded.complete)
                return;
            result = loaded;
            loop.quit();
        });
        loop.exec();
    }
    for (const QString &notice : result.notices)
        writeErr(notice);

    QByteArray out;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const ProgrammeGuide::NowNext found = result.guide->at(i, *moment);
        out += "{\"name\":" + valueJson(entries[i].name()) + ",\"now\":" + programmeJson(found.now)
            + ",\"next\":" + programmeJson(found.next) + "}\n";
        if (out.size() > (1 << 16)) {
            std::fwrite(out.constData(), 1, size_t(out.size()), stdout);
            out.clear();
        }
    }
    std::fwrite(out.constData(), 1, size_t(out.size()), stdout);
    return 0;
}
