// A minute of HD recording while a 720p video plays: frames expected, written and dropped, where
// the sound ends against the pictures, and the CPU it takes, beside the same capture made by
// the ffmpeg command line (X11 screen grab, the sound server's monitor, the same x264 settings).
// Shorter runs compare the x264 presets. Options: --seconds N (default 60), --json PATH.
#include "benchreport.h"
#include "mainthreadprobe.h"
#include "mediaprobe.h"
#include "recordingstage.h"
#include "testmedia.h"

#include "recording/capturegeometry.h"
#include "recording/playerrecordingcontroller.h"
#include "recording/recordingnames.h"
#include "windowactivation.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/resource.h>

namespace {

constexpr QSize viewSize(960, 540);

double cpuSeconds(int who)
{
    rusage usage {};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

struct Run
{
    bool ok = false;
    QString error;
    double seconds = 0;
    PlayerCaptureWriter::Statistics statistics;
    double cpuShare = 0; // of one core, the whole player included
    double stopStallMs = 0; // the main thread's longest stall from stop until the file is done
    double stopCallMs = 0; // of which the stop call itself
    double steadyStallMs = 0; // the longest stall in the last seconds before the stop
    quint64 picturesDrawn = 0; // new pictures the player drew while recording
};

// With pausedAtStop the video is paused for the last half second, so that the stall at stop
// is the recorder's alone and not the software renderer's.
Run recordWithPlayer(RecordingStage &stage, const char *preset, int seconds, const QString &path,
                     bool pausedAtStop = false)
{
    Run run;
    PlayerRecordingController recorder;
    recorder.setEncoderPreset(preset);
    recorder.setSaveFileChooser(
        [path](QWidget *, const PlayerRecordingController::SaveRequest &) { return path; });
    if (!WindowActivation::activate(stage.window())) {
        run.error = QStringLiteral("the player window did not become active");
        return run;
    }
    recorder.startRecording(PlayerRecordingQuality::hd);
    if (!QTest::qWaitFor([&] { return recorder.state() == PlayerRecordingState::recording; },
                         20'000)) {
        run.error = recorder.errorMessage().value_or(QStringLiteral("did not start"));
        return run;
    }
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    const quint64 drawnBefore = stage.view()->drawnFrameCount();
    QElapsedTimer wall;
    wall.start();
    // The stall at stop is told apart from the player's own by the same probe just before it.
    constexpr int steadyMs = 3000;
    QTest::qWait(seconds * 1000 - steadyMs);
    MainThreadProbe steady;
    steady.start();
    QTest::qWait(steadyMs);
    steady.stop();
    run.steadyStallMs = steady.longestGapMs();
    run.picturesDrawn = stage.view()->drawnFrameCount() - drawnBefore;
    if (pausedAtStop) {
        stage.player()->pause();
        QTest::qWait(500);
    }
    MainThreadProbe probe;
    probe.start();
    QElapsedTimer stopCall;
    stopCall.start();
    recorder.stopRecording();
    run.stopCallMs = double(stopCall.nsecsElapsed()) / 1e6;
    if (!QTest::qWaitFor([&] { return recorder.state() == PlayerRecordingState::idle; }, 120'000)) {
        run.error = QStringLiteral("did not finish");
        return run;
    }
    // The stream goes on the next turn of the loop; its end belongs to the stop.
    QTest::qWait(50);
    probe.stop();
    run.stopStallMs = probe.longestGapMs();
    if (pausedAtStop)
        stage.player()->play();
    run.seconds = double(wall.elapsed()) / 1000;
    run.cpuShare = (cpuSeconds(RUSAGE_SELF) - cpuBefore) / run.seconds;
    run.statistics = recorder.lastStatistics();
    run.error = recorder.errorMessage().value_or(QString());
    run.ok = run.error.isEmpty();
    return run;
}

// The same capture by the ffmpeg command line, of the same area of the screen.
Run recordWithFfmpeg(RecordingStage &stage, const char *preset, int seconds, const QString &path)
{
    Run run;
    const QPoint origin = stage.view()->mapToGlobal(QPoint(0, 0));
    const QSize output
        = CaptureGeometry::outputDimensions(QSizeF(viewSize), 1, PlayerRecordingQuality::hd);
    const QString display = qEnvironmentVariable("DISPLAY");
    const QStringList arguments {
        QStringLiteral("-v"),
        QStringLiteral("error"),
        QStringLiteral("-stats"),
        QStringLiteral("-y"),
        QStringLiteral("-f"),
        QStringLiteral("x11grab"),
        QStringLiteral("-draw_mouse"),
        QStringLiteral("0"),
        QStringLiteral("-framerate"),
        QStringLiteral("30"),
        QStringLiteral("-video_size"),
        QStringLiteral("%1x%2").arg(viewSize.width()).arg(viewSize.height()),
        QStringLiteral("-i"),
        QStringLiteral("%1+%2,%3").arg(display).arg(origin.x()).arg(origin.y()),
        QStringLiteral("-f"),
        QStringLiteral("pulse"),
        QStringLiteral("-i"),
        QStringLiteral("@DEFAULT_MONITOR@"),
        QStringLiteral("-t"),
        QString::number(seconds),
        QStringLiteral("-vf"),
        QStringLiteral("scale=%1:%2").arg(output.width()).arg(output.height()),
        QStringLiteral("-c:v"),
        QStringLiteral("libx264"),
        QStringLiteral("-preset"),
        QString::fromLatin1(preset),
        QStringLiteral("-profile:v"),
        QStringLiteral("high"),
        QStringLiteral("-pix_fmt"),
        QStringLiteral("yuv420p"),
        QStringLiteral("-b:v"),
        QString::number(RecordingNames::averageBitRate(output.width(), output.height())),
        QStringLiteral("-g"),
        QStringLiteral("60"),
        QStringLiteral("-c:a"),
        QStringLiteral("aac"),
        QStringLiteral("-b:a"),
        QStringLiteral("192k"),
        QStringLiteral("-ar"),
        QStringLiteral("48000"),
        QStringLiteral("-ac"),
        QStringLiteral("2"),
        path};
    const double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
    const double selfBefore = cpuSeconds(RUSAGE_SELF);
    QElapsedTimer wall;
    wall.start();
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), arguments);
    if (!ffmpeg.waitForStarted()) {
        run.error = QStringLiteral("ffmpeg did not start");
        return run;
    }
    // The event loop keeps running so that the player keeps drawing.
    if (!QTest::qWaitFor([&] { return ffmpeg.state() == QProcess::NotRunning; },
                         (seconds + 60) * 1000)) {
        ffmpeg.kill();
        run.error = QStringLiteral("ffmpeg did not finish");
        return run;
    }
    run.seconds = double(wall.elapsed()) / 1000;
    const double children = cpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
    const double player = cpuSeconds(RUSAGE_SELF) - selfBefore;
    run.cpuShare = (children + player) / run.seconds;
    const QString stats = QString::fromUtf8(ffmpeg.readAllStandardError());
    const auto drops = QRegularExpression(QStringLiteral("drop=\\s*(\\d+)")).globalMatch(stats);
    qint64 dropped = 0;
    for (auto it = drops; it.hasNext();)
        dropped = it.next().captured(1).toLongLong();
    run.statistics.framesWritten = MediaProbe::videoPacketCount(path);
    run.statistics.framesDropped = dropped;
    run.ok = ffmpeg.exitCode() == 0 && run.statistics.framesWritten > 0;
    if (!run.ok)
        run.error = stats.right(400);
    return run;
}

void report(BenchReport &report, const QString &prefix, const Run &run, int seconds)
{
    if (!run.ok) {
        report.note(prefix + QStringLiteral(": failed: ") + run.error);
        return;
    }
    const double expected = seconds * 30.0;
    report.add(prefix + QStringLiteral(" frames expected"), expected, QStringLiteral("frames"));
    report.add(prefix + QStringLiteral(" frames written"), double(run.statistics.framesWritten),
               QStringLiteral("frames"));
    report.add(prefix + QStringLiteral(" frames dropped"), double(run.statistics.framesDropped),
               QStringLiteral("frames"));
    report.add(prefix + QStringLiteral(" written share"),
               100.0 * double(run.statistics.framesWritten) / expected, QStringLiteral("%"));
    if (run.picturesDrawn > 0) {
        // Slots without a new picture repeat the last one, so the written share reads full
        // even when pictures are lost; these say how many of the player's pictures are kept.
        report.add(prefix + QStringLiteral(" new pictures drawn"), double(run.picturesDrawn),
                   QStringLiteral("pictures"));
        report.add(prefix + QStringLiteral(" new pictures kept"),
                   100.0 * double(run.statistics.picturesWritten) / double(run.picturesDrawn),
                   QStringLiteral("%"));
    }
    report.add(prefix + QStringLiteral(" CPU"), 100.0 * run.cpuShare,
               QStringLiteral("% of one core"));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    BenchReport bench(QStringLiteral("recording"));
    int seconds = 60;
    for (int i = 1; i + 1 < argc; ++i) {
        if (qstrcmp(argv[i], "--seconds") == 0)
            seconds = std::max(5, atoi(argv[i + 1]));
    }
    QTemporaryDir dir;
    const QString clip = dir.filePath(QStringLiteral("720p.mp4"));
    const int clipSeconds = seconds * 2 + 90;
    if (!TestMedia::makeClip(clip, clipSeconds, {1280, 720}, 30)) {
        bench.note(QStringLiteral("could not make the 720p clip"));
        return 1;
    }
    RecordingStage stage(viewSize);
    if (!stage.play(clip)) {
        bench.note(QStringLiteral("the 720p clip did not play"));
        return 1;
    }
    const char *preset = PlayerCaptureWriter::defaultPreset;
    bench.note(QStringLiteral("HD recording (%1 x %2 view into 1920 x 1080, preset %3) of a 720p "
                              "video for %4 s")
                   .arg(viewSize.width())
                   .arg(viewSize.height())
                   .arg(QString::fromLatin1(preset))
                   .arg(seconds));
    const Run player
        = recordWithPlayer(stage, preset, seconds, dir.filePath(QStringLiteral("p.mp4")), true);
    report(bench, QStringLiteral("player"), player, seconds);
    if (player.ok) {
        bench.add(QStringLiteral("player audio offset at the end"),
                  1000 * player.statistics.audioOffset, QStringLiteral("ms"));
        bench.add(QStringLiteral("player audio realigned after the start"),
                  1000 * player.statistics.audioRealigned, QStringLiteral("ms"));
        bench.add(QStringLiteral("player silence before the first sound"),
                  1000 * player.statistics.audioLeadIn, QStringLiteral("ms"));
        bench.add(QStringLiteral("player UI-thread longest stall while stopping (video paused)"),
                  player.stopStallMs, QStringLiteral("ms"));
        bench.add(QStringLiteral("player UI-thread time in the stop call"), player.stopCallMs,
                  QStringLiteral("ms"));
        bench.add(
            QStringLiteral("player UI-thread longest stall in the 3 s before (video playing)"),
            player.steadyStallMs, QStringLiteral("ms"));
    }
    // Sound against picture: a clip that flashes and beeps at the same instants, recorded.
    const QString flashes = dir.filePath(QStringLiteral("flashes.mp4"));
    if (TestMedia::makeFlashBeep(flashes, 40, viewSize) && stage.play(flashes)) {
        const QString synced = dir.filePath(QStringLiteral("sync.mp4"));
        const Run run = recordWithPlayer(stage, preset, 10, synced);
        int paired = 0;
        const double offset = run.ok ? MediaProbe::flashBeepOffset(synced, &paired) : qQNaN();
        bench.add(QStringLiteral("player sound after picture (flash and beep, median)"),
                  1000 * offset, QStringLiteral("ms"));
        bench.add(QStringLiteral("player flashes paired with their beep"), paired,
                  QStringLiteral("flashes"));
        stage.play(clip);
    } else {
        bench.note(QStringLiteral("could not play the flash-and-beep clip"));
    }

    const Run ffmpeg
        = recordWithFfmpeg(stage, preset, seconds, dir.filePath(QStringLiteral("f.mp4")));
    report(bench, QStringLiteral("ffmpeg x11grab"), ffmpeg, seconds);

    // The presets side by side, shorter.
    const int sweep = std::max(5, seconds / 4);
    for (const char *candidate : {"ultrafast", "superfast", "veryfast", "faster"}) {
        const Run run = recordWithPlayer(
            stage, candidate, sweep,
            dir.filePath(QString::fromLatin1(candidate) + QStringLiteral(".mp4")));
        report(bench, QStringLiteral("preset %1").arg(QString::fromLatin1(candidate)), run, sweep);
    }

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !bench.write(json))
        return 1;
    return player.ok ? 0 : 1;
}
