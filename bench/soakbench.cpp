// The player's resident memory while it plays a live 720p HLS channel for a long time, as a user
// leaves a channel on for an evening. ffmpeg makes the channel in real time into a sliding
// window of segments; a local server hands them out. Prints the memory every minute and its
// growth after the first two. Options: --minutes N (default 3), --json PATH.
#include "benchreport.h"
#include "eventloopwait.h"
#include "residentmemory.h"
#include "serverthread.h"

#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "surface/playerhostingview.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int warmUpMinutes = 2;

// Resident memory by where it lives: the software OpenGL driver (LLVM and the DRI driver, which a
// machine with a GPU driver does not load), malloc's heap and anonymous mappings, and the rest.
struct ResidentShares
{
    double softwareGl = 0;
    double anonymous = 0;
    double other = 0;
};

ResidentShares residentShares()
{
    ResidentShares shares;
    QFile maps(QStringLiteral("/proc/self/smaps"));
    if (!maps.open(QIODevice::ReadOnly))
        return shares;
    double *current = &shares.other;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 5 && fields[0].contains('-') && !fields[0].endsWith(':')) {
            const QByteArray path = fields.size() >= 6 ? fields[5] : QByteArray();
            if (path.contains("libLLVM") || path.contains("/dri/") || path.contains("libgallium"))
                current = &shares.softwareGl;
            else if (path.isEmpty() || path == "[heap]")
                current = &shares.anonymous;
            else
                current = &shares.other;
        } else if (fields.size() >= 2 && fields[0] == "Rss:") {
            *current += fields[1].toDouble() / 1024.0;
        }
    }
    return shares;
}

int minutesFromArguments(int argc, char *argv[])
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--minutes") == 0)
            return std::max(1, std::atoi(argv[i + 1]));
    }
    return 3;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("soak"));
    const int minutes = minutesFromArguments(argc, argv);

    QTemporaryDir folder;
    QProcess channel;
    channel.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    channel.start(QStringLiteral("ffmpeg"),
                  {QStringLiteral("-loglevel"),
                   QStringLiteral("error"),
                   QStringLiteral("-re"),
                   QStringLiteral("-f"),
                   QStringLiteral("lavfi"),
                   QStringLiteral("-i"),
                   QStringLiteral("testsrc2=size=1280x720:rate=25"),
                   QStringLiteral("-f"),
                   QStringLiteral("lavfi"),
                   QStringLiteral("-i"),
                   QStringLiteral("sine=frequency=440:sample_rate=48000"),
                   QStringLiteral("-c:v"),
                   QStringLiteral("libx264"),
                   QStringLiteral("-preset"),
                   QStringLiteral("ultrafast"),
                   QStringLiteral("-tune"),
                   QStringLiteral("zerolatency"),
                   QStringLiteral("-g"),
                   QStringLiteral("50"),
                   QStringLiteral("-b:v"),
                   QStringLiteral("2500k"),
                   QStringLiteral("-pix_fmt"),
                   QStringLiteral("yuv420p"),
                   QStringLiteral("-c:a"),
                   QStringLiteral("aac"),
                   QStringLiteral("-f"),
                   QStringLiteral("hls"),
                   QStringLiteral("-hls_time"),
                   QStringLiteral("2"),
                   QStringLiteral("-hls_list_size"),
                   QStringLiteral("6"),
                   QStringLiteral("-hls_flags"),
                   QStringLiteral("delete_segments"),
                   folder.filePath(QStringLiteral("live.m3u8"))});
    const QString index = folder.filePath(QStringLiteral("live.m3u8"));
    if (!channel.waitForStarted()
        || !waitUntil(
            [&] {
                QFile file(index);
                return file.open(QIODevice::ReadOnly) && file.readAll().count("#EXTINF") >= 3;
            },
            30'000)) {
        report.note(QStringLiteral("ffmpeg could not make the live channel"));
        return 1;
    }

    // The server answers from its own thread: handing out segments is not the player's work.
    LocalHttpServer server;
    server.serveDirectory(folder.path());
    const ServerThread serverThread(server);

    PlayerModel model(std::make_unique<MpvPlayer>());
    PlayerWindow window(model);
    window.resize(1280, 720);
    window.show();
    if (!waitUntil([&] { return window.hostingView()->isReady(); }, 10'000)) {
        report.note(QStringLiteral("the video view could not start OpenGL"));
        return 1;
    }
    model.openRemote(server.url(QStringLiteral("/live.m3u8")).toString(),
                     QStringLiteral("Live 720p"));
    if (!waitUntil([&] { return model.currentTime() > 1; }, 30'000)) {
        report.note(QStringLiteral("the live channel did not play"));
        return 1;
    }

    std::vector<double> perMinute;
    report.add(QStringLiteral("rss_playing_mb"), residentMegabytes(), QStringLiteral("MB"));
    for (int minute = 1; minute <= minutes; ++minute) {
        waitUntil([] { return false; }, 60'000);
        perMinute.push_back(residentMegabytes());
        report.add(QStringLiteral("rss_minute_%1_mb").arg(minute, 2, 10, QLatin1Char('0')),
                   perMinute.back(), QStringLiteral("MB"));
        std::fflush(stdout);
    }
    const double played = model.currentTime();
    const ResidentShares shares = residentShares();
    report.add(QStringLiteral("rss_software_gl_mb"), shares.softwareGl, QStringLiteral("MB"));
    report.add(QStringLiteral("rss_heap_and_anonymous_mb"), shares.anonymous, QStringLiteral("MB"));
    report.add(QStringLiteral("rss_libraries_and_files_mb"), shares.other, QStringLiteral("MB"));
    report.add(QStringLiteral("rss_without_software_gl_mb"), perMinute.back() - shares.softwareGl,
               QStringLiteral("MB"));
    model.stop();

    report.add(QStringLiteral("rss_peak_mb"), *std::max_element(perMinute.begin(), perMinute.end()),
               QStringLiteral("MB"));
    if (minutes > warmUpMinutes)
        report.add(QStringLiteral("rss_growth_after_warm_up_mb"),
                   perMinute.back() - perMinute[warmUpMinutes - 1], QStringLiteral("MB"));
    report.note(QStringLiteral("%1 min of a live 720p25 H.264/AAC HLS channel (2 s segments, "
                               "6 in the window) in a 1280x720 window; %2 s played; growth "
                               "counted from minute %3")
                    .arg(minutes)
                    .arg(played, 0, 'f', 0)
                    .arg(warmUpMinutes));

    channel.terminate();
    channel.waitForFinished(5000);

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return 0;
}
