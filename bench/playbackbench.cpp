// Time from play to the first frame on screen for a local 1080p H.264 file, in the app and in
// the mpv command on the same file; and how long the main thread is held while a 200,000-entry
// playlist is downloaded, parsed and published.
#include "benchreport.h"
#include "eventloopwait.h"
#include "mainthreadprobe.h"
#include "serverthread.h"
#include "syntheticplaylist.h"

#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "surface/playerhostingview.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QRegularExpression>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <mpv/client.h>
#include <vector>

namespace {

constexpr int runs = 7;

QStringList arguments(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *argument : list)
        result.append(QString::fromLatin1(argument));
    return result;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? qQNaN() : values[values.size() / 2];
}

bool makeMedia(const QString &path)
{
    if (QFileInfo(path).size() > 0)
        return true;
    QDir().mkpath(QFileInfo(path).path());
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 arguments({"-v",
                            "error",
                            "-y",
                            "-f",
                            "lavfi",
                            "-i",
                            "testsrc2=size=1920x1080:rate=30:duration=20",
                            "-f",
                            "lavfi",
                            "-i",
                            "sine=frequency=440:duration=20",
                            "-c:v",
                            "libx264",
                            "-preset",
                            "veryfast",
                            "-profile:v",
                            "high",
                            "-pix_fmt",
                            "yuv420p",
                            "-c:a",
                            "aac",
                            "-shortest",
                            "-movflags",
                            "+faststart"})
                     + QStringList {path});
    return ffmpeg.waitForFinished(300'000) && ffmpeg.exitCode() == 0;
}

// One run of the mpv command: milliseconds from opening the file to the first frame shown,
// read from mpv's own timed log.
std::optional<double> mpvFirstFrameMs(const QString &file)
{
    QProcess mpv;
    mpv.start(QStringLiteral("mpv"),
              arguments({"--no-config", "--ytdl=no", "--msg-time", "--msg-level=all=v",
                         "--frames=1", "--vo=gpu", "--gpu-sw=yes", "--hwdec=no"})
                  + QStringList {file});
    if (!mpv.waitForFinished(60'000))
        return std::nullopt;
    const QString log = QString::fromUtf8(mpv.readAllStandardError() + mpv.readAllStandardOutput());
    static const QRegularExpression timed(QStringLiteral(R"(^\[\s*([0-9.]+)\]\s*(.*)$)"));
    std::optional<double> opened;
    for (const QString &line : log.split(u'\n')) {
        const QRegularExpressionMatch match = timed.match(line);
        if (!match.hasMatch())
            continue;
        const double seconds = match.captured(1).toDouble();
        const QString text = match.captured(2);
        if (!opened && text.contains(QLatin1String("] Opening ")))
            opened = seconds;
        if (opened && text.contains(QLatin1String("first video frame after restart shown")))
            return (seconds - *opened) * 1000;
    }
    return std::nullopt;
}

// Gaps between turns of the main thread's event loop, in milliseconds, while the file plays for
// a while with mpv's video-timing-offset at the given value: how long the interface waits.
std::vector<double> mainThreadGapsWhilePlaying(PlayerModel &model, PlayerHostingView *view,
                                               const QUrl &url, const char *timingOffset)
{
    auto &mpv = static_cast<MpvPlayer &>(model.player());
    mpv_set_property_string(mpv.handle(), "video-timing-offset", timingOffset);
    bool drawn = false;
    const QMetaObject::Connection connection
        = QObject::connect(view, &PlayerHostingView::frameDrawn, [&] { drawn = true; });
    model.play(url, std::nullopt, false);
    waitUntil([&] { return drawn; }, 15'000);
    QObject::disconnect(connection);
    waitUntil([] { return false; }, 1000); // past the start

    std::vector<double> gaps;
    QElapsedTimer tick;
    tick.start();
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    probe.setInterval(1);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        gaps.push_back(tick.nsecsElapsed() / 1e6);
        tick.restart();
    });
    probe.start();
    waitUntil([] { return false; }, 8000);
    probe.stop();
    model.stop();
    std::sort(gaps.begin(), gaps.end());
    return gaps;
}

double percentile(const std::vector<double> &sorted, double fraction)
{
    return sorted.empty() ? qQNaN() : sorted[size_t(fraction * double(sorted.size() - 1))];
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("playback"));
    const QString media = QDir(QCoreApplication::applicationDirPath())
                              .filePath(QStringLiteral("../bench/media/h264-1080p30.mp4"));
    if (!makeMedia(media)) {
        std::fputs("lumo-bench-playback: ffmpeg could not make the 1080p file\n", stderr);
        return 1;
    }
    const QUrl url = QUrl::fromLocalFile(QFileInfo(media).absoluteFilePath());

    PlayerModel model(std::make_unique<MpvPlayer>());
    PlayerWindow window(model);
    window.resize(1280, 720);
    window.show();
    PlayerHostingView *view = window.hostingView();
    if (!waitUntil([view] { return view->isReady(); }, 10'000)) {
        std::fputs("lumo-bench-playback: the video view could not start OpenGL\n", stderr);
        return 1;
    }

    // --playlist-only measures the playlist load alone, for quick turns while working on it.
    const bool playlistOnly
        = QCoreApplication::arguments().contains(QStringLiteral("--playlist-only"));

    // Time to first frame in the app.
    std::vector<double> appRuns;
    for (int run = 0; run < (playlistOnly ? 0 : runs); ++run) {
        model.stop();
        waitUntil([] { return false; }, 300);
        bool drawn = false;
        const QMetaObject::Connection connection
            = QObject::connect(view, &PlayerHostingView::frameDrawn, [&] { drawn = true; });
        QElapsedTimer clock;
        clock.start();
        model.play(url, std::nullopt, false);
        const bool ok = waitUntil([&] { return drawn; }, 15'000);
        QObject::disconnect(connection);
        if (ok)
            appRuns.push_back(clock.nsecsElapsed() / 1e6);
    }
    model.stop();

    std::vector<double> mpvRuns;
    for (int run = 0; run < (playlistOnly ? 0 : runs); ++run)
        if (const std::optional<double> ms = mpvFirstFrameMs(media))
            mpvRuns.push_back(*ms);

    const double app = median(appRuns);
    const double mpv = median(mpvRuns);
    report.add(QStringLiteral("first_frame_app_ms"), app, QStringLiteral("ms"));
    report.add(QStringLiteral("first_frame_mpv_ms"), mpv, QStringLiteral("ms"));
    report.add(QStringLiteral("first_frame_ratio_app_to_mpv"), app / mpv, QStringLiteral("x"));
    report.note(QStringLiteral("median of %1 runs, 1920x1080 H.264 High, 30 fps, software GL; "
                               "mpv measured from opening the file to its first frame shown")
                    .arg(runs));

    // The main thread while 1080p plays: with the shipped timing offset of 0, and with mpv's
    // default of 50 ms, under which each render waits for its frame's moment.
    for (const auto &[offset, name] : {std::pair {"0", QStringLiteral("offset_0")},
                                       std::pair {"0.05", QStringLiteral("offset_50ms")}}) {
        if (playlistOnly)
            break;
        const std::vector<double> gaps = mainThreadGapsWhilePlaying(model, view, url, offset);
        report.add(QStringLiteral("playback_1080p_main_thread_longest_stall_ms_") + name,
                   gaps.empty() ? qQNaN() : gaps.back(), QStringLiteral("ms"));
        report.add(QStringLiteral("playback_1080p_main_thread_p99_gap_ms_") + name,
                   percentile(gaps, 0.99), QStringLiteral("ms"));
    }
    mpv_set_property_string(static_cast<MpvPlayer &>(model.player()).handle(),
                            "video-timing-offset", "0");
    if (!playlistOnly)
        report.note(
            QStringLiteral("main-thread stalls: 8 s of the 1080p file drawn into a 1280x720 "
                           "window with software GL; a 1 ms timer's longest gap and 99th "
                           "percentile"));

    // The main thread while a 200,000-entry playlist loads.
    // The server answers from its own thread: writing 66 MB is its work, not the player's.
    LocalHttpServer server;
    const QByteArray playlist = makeSyntheticPlaylist(200'000);
    server.route(QStringLiteral("/big.m3u"), HttpResponse::text(playlist, "audio/x-mpegurl"));
    const ServerThread serverThread(server);
    std::vector<double> stalls;
    std::vector<double> totals;
    // The channel list is drawn as it would be for a user who opened the playlist from the
    // sidebar. The window's first drawing is not the playlist's work.
    window.contentView()->setShowSidebar(true, 0);
    waitUntil([] { return false; }, 500);
    // The floor under the stall: drawing the window once, with nothing changed. With the video
    // view in it, every redraw is composed through OpenGL, in software on this display.
    std::vector<double> redraws;
    for (int run = 0; run < 11; ++run) {
        QElapsedTimer redraw;
        redraw.start();
        window.repaint();
        redraws.push_back(redraw.nsecsElapsed() / 1e6);
        waitUntil([] { return false; }, 20);
    }
    report.add(QStringLiteral("window_redraw_ms"), median(redraws), QStringLiteral("ms"));
    for (int run = 0; run < 5; ++run) {
        model.clearNetworkStream();
        MainThreadProbe probe;
        QElapsedTimer total;
        total.start();
        probe.start();
        model.openRemote(server.url(QStringLiteral("/big.m3u")).toString(), std::nullopt);

        const bool ok = waitUntil([&] { return model.playlist().size() == 200'000; }, 60'000);
        // The gap that contains the publication ends at the next tick.
        waitUntil([] { return false; }, 20);
        probe.stop();
        if (ok) {
            stalls.push_back(probe.longestGapMs());
            totals.push_back(total.nsecsElapsed() / 1e6);
        }
    }
    report.add(QStringLiteral("playlist_200k_bytes"), double(playlist.size()), QStringLiteral("B"));
    report.add(QStringLiteral("playlist_200k_load_ms"), median(totals), QStringLiteral("ms"));
    report.add(QStringLiteral("playlist_200k_longest_main_thread_stall_ms"), median(stalls),
               QStringLiteral("ms"));
    report.add(QStringLiteral("playlist_200k_worst_main_thread_stall_ms"),
               stalls.empty() ? qQNaN() : *std::max_element(stalls.begin(), stalls.end()),
               QStringLiteral("ms"));
    report.note(QStringLiteral("download over loopback, decode and parse on a worker, publish on "
                               "the main thread; median of 5 loads"));

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return !playlistOnly && (appRuns.empty() || mpvRuns.empty()) ? 1 : 0;
}
