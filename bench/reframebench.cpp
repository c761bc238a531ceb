// What one smart-reframe step costs the main thread while a 1080p video with a real face
// plays (reading back the picture shown and handing it to the detection thread), what the
// detection costs that thread, and the main thread's longest stall with and without the mode.
#include "benchreport.h"
#include "mainthreadprobe.h"
#include "testfaces.h"
#include "testmedia.h"

#include "model/mpvplayer.h"
#include "surface/facedetectors.h"
#include "surface/mpvframegrabber.h"
#include "surface/playerhostingview.h"
#include "surface/smartreframe.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <vector>

namespace {

constexpr int steps = 40;

double percentile(std::vector<double> values, double share)
{
    if (values.empty())
        return qQNaN();
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(share * double(values.size())))];
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    BenchReport report(QStringLiteral("reframe"));
    QTemporaryDir media;
    const QString video = media.filePath(QStringLiteral("face-1080p.mp4"));
    const QString face = TestFaces::directory() + QStringLiteral("/astronaut.png");
    if (!TestMedia::makeMovingPicture(video, face, {1920, 1080}, 2, 16)) {
        report.note(QStringLiteral("could not make the test video (is %1 there?)").arg(face));
        return 1;
    }
    // Detection runs on one core of its own thread in the player.
    FaceDetectors::useOneCore();
    const std::unique_ptr<FaceDetector> detector = FaceDetectors::makeDefault();
    if (!detector) {
        report.note(QStringLiteral("no face detector installed"));
        return 1;
    }

    for (const QSize viewSize : {QSize(1280, 720), QSize(1920, 1080)}) {
        MpvPlayer player;
        PlayerHostingView view;
        view.resize(viewSize);
        view.setPlayer(&player);
        view.setDisplayMode(PortraitDisplayMode::smart);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view)
            || !QTest::qWaitFor([&] { return view.isReady(); })) {
            report.note(QStringLiteral("the video view did not start"));
            return 1;
        }
        QSignalSpy frames(&view, &PlayerHostingView::frameDrawn);
        player.replaceCurrentItem(QUrl::fromLocalFile(video));
        player.play();
        if (!QTest::qWaitFor([&] { return frames.count() > 5; }, 20000)) {
            report.note(QStringLiteral("no frame was drawn"));
            return 1;
        }
        MpvFrameGrabber grabber(player.handle());
        std::vector<double> stepMs;
        std::vector<double> tapMs;
        std::vector<double> detectMs;
        for (int i = 0; i < steps; ++i) {
            const int seen = int(frames.count());
            if (!QTest::qWaitFor([&] { return frames.count() > seen; }, 2000))
                report.note(QStringLiteral("no new frame within 2 s; the step reads none"));
            // A step taken while a detection runs only skips: measure steps that sample.
            if (!QTest::qWaitFor([&] { return !view.isFindingFaces(); }, 2000))
                report.note(QStringLiteral("a detection took over 2 s"));
            QElapsedTimer clock;
            clock.start();
            view.trackLargestFace();
            stepMs.push_back(double(clock.nsecsElapsed()) / 1e6);

            // The detection thread's two parts, measured apart here: taking the frame from mpv
            // and searching it.
            clock.restart();
            const QImage picture = grabber.grab();
            tapMs.push_back(double(clock.nsecsElapsed()) / 1e6);
            clock.restart();
            detector->detect(picture);
            detectMs.push_back(double(clock.nsecsElapsed()) / 1e6);
            QTest::qWait(100);
        }
        // The longest the main thread goes without turning its loop, in each mode, while the
        // video plays and (in smart reframe) the timer samples it.
        double longestStall[2] {};
        for (int smart = 0; smart < 2; ++smart) {
            view.setDisplayMode(smart ? PortraitDisplayMode::smart : PortraitDisplayMode::normal);
            player.seekExactly(0);
            QTest::qWait(500);
            MainThreadProbe probe;
            probe.start();
            QTest::qWait(6000);
            probe.stop();
            longestStall[smart] = probe.longestGapMs();
        }
        const QString key
            = QStringLiteral("view_%1x%2_").arg(viewSize.width()).arg(viewSize.height());
        report.add(key + QStringLiteral("window_thread_per_sample_median"), percentile(stepMs, 0.5),
                   QStringLiteral("ms"));
        report.add(key + QStringLiteral("window_thread_per_sample_p90"), percentile(stepMs, 0.9),
                   QStringLiteral("ms"));
        report.add(key + QStringLiteral("window_thread_per_sample_worst"), percentile(stepMs, 1.0),
                   QStringLiteral("ms"));
        report.add(key + QStringLiteral("detection_thread_frame_grab_median"),
                   percentile(tapMs, 0.5), QStringLiteral("ms"));
        report.add(key + QStringLiteral("detection_thread_search_median"),
                   percentile(detectMs, 0.5), QStringLiteral("ms"));
        report.add(key + QStringLiteral("final_pan"), view.horizontalPan(), QStringLiteral(""));
        report.add(key + QStringLiteral("longest_stall_normal"), longestStall[0],
                   QStringLiteral("ms"));
        report.add(key + QStringLiteral("longest_stall_smart"), longestStall[1],
                   QStringLiteral("ms"));
    }
    report.note(QStringLiteral("1920x1080 H.264 with a face moving left to right; detector: %1; "
                               "%2 steps per view size, each on a newly drawn frame")
                    .arg(detector->name())
                    .arg(steps));
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return 0;
}
