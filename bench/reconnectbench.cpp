// What reconnecting costs in memory: a live MPEG-TS channel from a local server loaded again
// and again, as a stalled channel is, while the process's resident memory is read. The figure
// that matters is the growth after the first ten reconnects, when every cache has filled.
// Options: --reconnects N (default 100), --interval-ms MS (between them, default 800), --window
// (the whole player in its window, drawing the picture, rather than the player alone), --json PATH.
#include "benchreport.h"
#include "residentmemory.h"

#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "testmedia.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    int reconnects = 100;
    const QStringList arguments = app.arguments();
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--reconnects"));
        at >= 0 && at + 1 < arguments.size())
        reconnects = std::max(11, arguments[at + 1].toInt());
    int intervalMs = 800;
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--interval-ms"));
        at >= 0 && at + 1 < arguments.size())
        intervalMs = std::max(100, arguments[at + 1].toInt());
    BenchReport report(QStringLiteral("reconnect"));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("live.ts"));
    if (!TestMedia::makeTransportStream(path, 20)) {
        report.note(QStringLiteral("cannot make the stream"));
        return 1;
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray bytes = file.readAll();
    LocalHttpServer server;
    server.listen();
    server.route(QStringLiteral("/live.ts"), [bytes](const HttpRequest &) {
        HttpResponse response;
        response.body = bytes;
        response.contentType = "video/mp2t";
        response.bytesPerSecond = 400'000; // as it comes live, with no length
        return response;
    });
    const bool window = arguments.contains(QStringLiteral("--window"));
    PlayerModel model(std::make_unique<MpvPlayer>(window ? MpvPlayer::VideoOutput::renderContext
                                                         : MpvPlayer::VideoOutput::none));
    std::unique_ptr<PlayerWindow> playerWindow;
    if (window) {
        playerWindow = std::make_unique<PlayerWindow>(model);
        playerWindow->show();
    }
    model.play(server.url(QStringLiteral("/live.ts")), QStringLiteral("Live"), true);
    MediaPlayer &player = model.player();
    QTest::qWait(3000);
    double afterTen = 0;
    for (int i = 1; i <= reconnects; ++i) {
        player.reloadCurrentItem();
        QTest::qWait(intervalMs);
        if (i == 10)
            afterTen = residentMegabytes();
    }
    const double last = residentMegabytes();
    report.add(QStringLiteral("rssAfter10"), afterTen, QStringLiteral("MB"));
    report.add(QStringLiteral("rssAfterAll"), last, QStringLiteral("MB"));
    report.add(QStringLiteral("growthAfter10"), last - afterTen, QStringLiteral("MB"));
    report.add(QStringLiteral("reconnects"), reconnects, QStringLiteral("loads"));
    report.note(window ? QStringLiteral("the whole player in its window")
                       : QStringLiteral("the player alone, drawing nothing"));
    const QString json = jsonPathFromArguments(argc, argv);
    return json.isEmpty() || report.write(json) ? 0 : 1;
}
