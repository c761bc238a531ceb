// A recording follows the player while it runs: to another view when the player changes what
// it shows, to black when there is nothing to show, and through changes of the view's size,
// which never stretch or cut the picture in the file.
#include "mediaprobe.h"
#include "recording/capturegeometry.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingstage.h"
#include "surface/playersurfaceregistry.h"
#include "testmedia.h"
#include "windowactivation.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool near(const QColor &colour, const QColor &expected, int tolerance = 48)
{
    return std::abs(colour.red() - expected.red()) < tolerance
        && std::abs(colour.green() - expected.green()) < tolerance
        && std::abs(colour.blue() - expected.blue()) < tolerance;
}

QString describe(const QColor &colour)
{
    return colour.name();
}

} // namespace

class TestRecordingFollows : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_thirds;
    QString m_yellow;

    static QColor at(const QImage &frame, QPoint centre)
    {
        return MediaProbe::meanColour(frame, QRect(centre - QPoint(8, 8), QSize(16, 16)));
    }

    // The frame holds what the view showed, fitted in with its shape kept and black around it;
    // empty when it does, else what differs.
    static QString holdsUndistorted(const QImage &frame, const QImage &shown)
    {
        const QRect fitted = CaptureGeometry::letterbox(shown.size(), frame.size());
        const QImage view = shown.convertToFormat(QImage::Format_RGB32);
        for (const double across : {1 / 6.0, 3 / 6.0, 5 / 6.0}) {
            for (const double down : {0.1, 0.6, 0.9}) {
                const QPoint inView(int(view.width() * across), int(view.height() * down));
                const QPoint inFile(fitted.x() + int(fitted.width() * across),
                                    fitted.y() + int(fitted.height() * down));
                const QColor expected
                    = MediaProbe::meanColour(view, QRect(inView - QPoint(12, 6), QSize(24, 12)));
                const QColor colour
                    = MediaProbe::meanColour(frame, QRect(inFile - QPoint(6, 3), QSize(12, 6)));
                if (!near(colour, expected))
                    return describe(colour) + " recorded at " + QString::number(inFile.x()) + ","
                        + QString::number(inFile.y()) + ", " + describe(expected) + " shown";
            }
        }
        // Bars, where the shapes differ enough to have them, are black.
        if (fitted.y() >= 5) {
            const QColor bar = MediaProbe::meanColour(
                frame, QRect(frame.width() / 4, 1, frame.width() / 2, fitted.y() - 3));
            if (!near(bar, QColor(0, 0, 0), 24))
                return "the bar above reads " + describe(bar);
        }
        return {};
    }

    // Records the stage while steps run, one after the other, each after its wait.
    static QString record(const QString &path,
                          const QList<std::pair<int, std::function<void()>>> &steps)
    {
        PlayerRecordingController recorder;
        recorder.setSaveFileChooser(
            [path](QWidget *, const PlayerRecordingController::SaveRequest &) { return path; });
        recorder.startRecording(PlayerRecordingQuality::normal);
        if (!QTest::qWaitFor([&] { return recorder.state() == PlayerRecordingState::recording; },
                             15'000))
            return "did not start: " + recorder.errorMessage().value_or("no error");
        for (const auto &[waitMs, step] : steps) {
            QTest::qWait(waitMs);
            step();
        }
        recorder.stopRecording();
        if (!QTest::qWaitFor([&] { return recorder.state() == PlayerRecordingState::idle; },
                             60'000))
            return "did not finish";
        return recorder.errorMessage().value_or(QString());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_thirds = m_dir.filePath("thirds.mp4");
        QVERIFY(TestMedia::makeColourThirds(m_thirds, {640, 360}, 60, 1000));
        m_yellow = m_dir.filePath("yellow.mp4");
        QProcess ffmpeg;
        ffmpeg.start("ffmpeg",
                     {"-v", "error", "-y", "-f", "lavfi", "-i",
                      "color=c=0xffff00:size=640x360:rate=25:duration=60", "-c:v", "libx264",
                      "-preset", "ultrafast", "-pix_fmt", "yuv420p", m_yellow});
        QVERIFY(ffmpeg.waitForFinished(60'000) && ffmpeg.exitCode() == 0);
    }

    void theRecordingFollowsThePlayerFromViewToView()
    {
        RecordingStage first;
        QVERIFY(first.play(m_thirds));
        auto second = std::make_unique<RecordingStage>();
        QVERIFY(second->play(m_yellow));
        // The first view is the player's when the recording starts.
        PlayerSurfaceRegistry::shared().setSurface(first.view());
        QVERIFY(WindowActivation::activate(first.window()));
        const QString path = m_dir.filePath("follows.mp4");
        const QString failure
            = record(path,
                     {{2000,
                       [&] {
                           PlayerSurfaceRegistry::shared().setSurface(second->view());
                       }},
                      // The view the player showed goes away, and nothing takes its place.
                      {2000,
                       [&] {
                           second.reset();
                       }},
                      {2000, [] {
                       }}});
        QVERIFY2(failure.isEmpty(), qPrintable(failure));

        const QPoint middle(320, 200);
        const QColor before = at(MediaProbe::frameAt(path, 1.0), middle);
        QVERIFY2(near(before, QColor(0, 255, 0)), qPrintable(describe(before)));
        const QColor after = at(MediaProbe::frameAt(path, 3.0), middle);
        QVERIFY2(near(after, QColor(255, 255, 0)), qPrintable(describe(after)));
        const QColor none = at(MediaProbe::frameAt(path, 5.0), middle);
        QVERIFY2(near(none, QColor(0, 0, 0), 24), qPrintable(describe(none)));
        // The file runs on through the black part: nothing froze.
        const double seconds = MediaProbe::duration(MediaProbe::probe(path));
        QVERIFY2(seconds > 5.5, qPrintable(QString::number(seconds)));
    }

    void subtitlesAreRecordedAsTheyAreSeen()
    {
        const QString subtitled = m_dir.filePath("subtitled.mkv");
        QVERIFY(TestMedia::makeTracks(subtitled, 60, false, true, {640, 360},
                                      QStringLiteral("Recorded as seen")));
        for (const PortraitDisplayMode mode :
             {PortraitDisplayMode::normal, PortraitDisplayMode::fill}) {
            RecordingStage stage;
            stage.view()->setDisplayMode(mode);
            QVERIFY(stage.play(subtitled));
            QTRY_COMPARE(stage.player()->subtitleText(), QStringLiteral("Recorded as seen"));
            const QString path = m_dir.filePath(QStringLiteral("subtitles-%1.mp4").arg(int(mode)));
            const QString failure = record(path, {{2500, [] {
                                                   }}});
            QVERIFY2(failure.isEmpty(), qPrintable(failure));
            const QImage frame
                = MediaProbe::frameAt(path, 1.5).convertToFormat(QImage::Format_RGB32);
            QVERIFY(!frame.isNull());
            // White letters on the black picture, in the lower half, upright.
            const QRect letters = MediaProbe::whiteArea(frame);
            QVERIFY2(!letters.isEmpty(), qPrintable(PortraitDisplayModes::title(mode)));
            QVERIFY(letters.top() > frame.height() / 2);
            QVERIFY(letters.width() > letters.height());
        }
    }

    void aViewThatChangesSizeKeepsItsShapeInTheFile()
    {
        RecordingStage stage;
        QVERIFY(stage.play(m_thirds));
        const QString path = m_dir.filePath("resized.mp4");
        QImage shown;
        // As when the sidebar is hidden: the view grows wider than it was at the start.
        const QString failure = record(path,
                                       {{1500,
                                         [&] {
                                             stage.view()->setFixedSize(960, 360);
                                         }},
                                        {2500, [&] {
                                             shown = stage.view()->grabFramebuffer();
                                         }}});
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QCOMPARE(shown.size(), QSize(960, 360));

        const QImage frame = MediaProbe::frameAt(path, 3.5);
        QVERIFY(!frame.isNull());
        QCOMPARE(frame.size(), QSize(640, 360));
        // The 960 x 360 view, fitted into 640 x 360, fills 640 x 240 between black bars.
        for (const QPoint bar : {QPoint(320, 25), QPoint(320, 335)}) {
            const QColor colour = at(frame, bar);
            QVERIFY2(near(colour, QColor(0, 0, 0), 24),
                     qPrintable(describe(colour) + " at " + QString::number(bar.y())));
        }
        // And what the view showed is in it, undistorted.
        for (const double across : {1 / 6.0, 3 / 6.0, 5 / 6.0}) {
            for (const double down : {0.05, 0.6}) {
                const QPoint inView(int(960 * across), int(360 * down));
                const QPoint inFile(int(640 * across), 60 + int(240 * down));
                const QColor expected
                    = MediaProbe::meanColour(shown.convertToFormat(QImage::Format_RGB32),
                                             QRect(inView - QPoint(12, 6), QSize(24, 12)));
                const QColor colour
                    = MediaProbe::meanColour(frame, QRect(inFile - QPoint(8, 4), QSize(16, 8)));
                QVERIFY2(
                    near(colour, expected),
                    qPrintable(describe(colour) + " recorded, " + describe(expected) + " shown"));
            }
        }
        // Before the change the picture filled the file.
        const QColor top = at(MediaProbe::frameAt(path, 0.8), QPoint(320, 15));
        QVERIFY2(near(top, QColor(255, 255, 255)), qPrintable(describe(top)));
    }

    void fullScreenAndBackKeepTheShapeInTheFile()
    {
        // Full screen is the window manager's to grant; the process ends with the test.
        QProcess windowManager;
        windowManager.start("openbox", {"--sm-disable"});
        QVERIFY2(windowManager.waitForStarted(), "openbox is missing: run ./lumo setup");
        QTest::qWait(1000); // openbox takes the display
        QCOMPARE(windowManager.state(), QProcess::Running);
        RecordingStage stage;
        QVERIFY(stage.play(m_thirds));
        const QString path = m_dir.filePath("fullscreen.mp4");
        QImage full;
        QImage back;
        auto *view = stage.view();
        const QString failure = record(path,
                                       {{1500,
                                         [&] {
                                             view->setMinimumSize(1, 1);
                                             view->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
                                             stage.window()->showFullScreen();
                                         }},
                                        {2500,
                                         [&] {
                                             full = view->grabFramebuffer();
                                         }},
                                        {500,
                                         [&] {
                                             stage.window()->showNormal();
                                             view->setFixedSize(RecordingStage::viewSize);
                                         }},
                                        {2500, [&] {
                                             back = view->grabFramebuffer();
                                         }}});
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        // Full screen the view has the whole screen but for the strip below it.
        const QSize screen = stage.window()->screen()->size();
        QCOMPARE(full.size(), QSize(screen.width(), screen.height() - RecordingStage::stripHeight));
        QCOMPARE(back.size(), RecordingStage::viewSize);

        const QImage inFull = MediaProbe::frameAt(path, 3.3);
        QCOMPARE(inFull.size(), QSize(640, 360));
        const QString fullProblem = holdsUndistorted(inFull, full);
        QVERIFY2(fullProblem.isEmpty(), qPrintable(fullProblem));
        const QImage inBack = MediaProbe::frameAt(path, 6.2);
        const QString backProblem = holdsUndistorted(inBack, back);
        QVERIFY2(backProblem.isEmpty(), qPrintable(backProblem));
        windowManager.terminate();
        windowManager.waitForFinished(5000);
    }
};

QTEST_MAIN(TestRecordingFollows)
#include "tst_recordingfollows.moc"
