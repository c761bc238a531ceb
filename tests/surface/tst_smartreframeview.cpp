// Smart reframe in a real view with real mpv: which face the window follows in a picture, that
// detection runs beside the window's thread one picture at a time, and what the window's thread
// pays for it.
#include "testfaces.h"
#include "testmedia.h"

#include "model/mpvplayer.h"
#include "surface/facedetector.h"
#include "surface/facedetectors.h"
#include "surface/playerhostingview.h"
#include "surface/smartreframe.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>

using Mode = PortraitDisplayMode;

namespace {

constexpr QSize viewSize(640, 360);
constexpr QSize videoSize(1280, 720);

// Always one face left of centre, after a wait; counts its calls, how many ran at once and
// whether any ran on the window's thread.
struct SlowFaceLog
{
    std::atomic<int> calls {0};
    std::atomic<int> running {0};
    std::atomic<int> mostAtOnce {0};
    std::atomic<bool> onWindowThread {false};
};

class SlowFace final : public FaceDetector
{
public:
    SlowFace(SlowFaceLog *log, int ms)
        : m_log(log)
        , m_ms(ms)
    { }
    QList<QRectF> detect(const QImage &) override
    {
        ++m_log->calls;
        const int now = ++m_log->running;
        m_log->mostAtOnce = std::max(m_log->mostAtOnce.load(), now);
        if (QThread::currentThread() == qApp->thread())
            m_log->onWindowThread = true;
        QThread::msleep(ulong(m_ms));
        --m_log->running;
        return {QRectF(0.1, 0.3, 0.1, 0.2)};
    }
    QString name() const override { return QStringLiteral("slow"); }

private:
    SlowFaceLog *m_log;
    int m_ms;
};

// The longest the window's thread goes without turning its event loop while `during` runs.
template<typename Wait>
double longestStallMs(Wait during)
{
    QElapsedTimer tick;
    double longest = 0;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    probe.setInterval(1);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        longest = std::max(longest, double(tick.nsecsElapsed()) / 1e6);
        tick.restart();
    });
    tick.start();
    probe.start();
    during();
    probe.stop();
    return longest;
}

} // namespace

class TestSmartReframeView : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    std::unique_ptr<MpvPlayer> m_player;
    std::unique_ptr<PlayerHostingView> m_view;
    QString m_screenshots;

    QString media(const QString &name) const { return m_media.filePath(name); }

    bool play(const QString &file)
    {
        QSignalSpy frames(m_view.get(), &PlayerHostingView::frameDrawn);
        m_player->replaceCurrentItem(QUrl::fromLocalFile(file));
        m_player->play();
        return QTest::qWaitFor(
            [&] { return frames.count() > 1 && m_player->presentationSize().isValid(); }, 15000);
    }

    void picture(const QString &name)
    {
        m_view->grabFramebuffer().save(QDir(m_screenshots).filePath(name + ".png"));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        m_screenshots
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(m_screenshots);
        const TestFaces::Photo astronaut = TestFaces::photos().first();
        const QImage astronautImage = TestFaces::load(astronaut);
        QVERIFY2(!astronautImage.isNull(), "run ./lumo setup");
        // A face 3 % of the picture wide: the photograph is five face widths across.
        const int faceWidth = qRound(0.03 * videoSize.width());
        const int pictureWidth = qRound(faceWidth / astronaut.faces.first().width());
        const double faceCentre = astronaut.faces.first().center().x() * pictureWidth;
        // From the middle of the left third to the middle of the right third.
        const int fromX = qRound(videoSize.width() / 6.0 - faceCentre);
        const int toX = qRound(videoSize.width() * 5 / 6.0 - faceCentre);
        QVERIFY(TestMedia::makeWalkingPicture(media("walk.mp4"),
                                              TestFaces::directory() + "/astronaut.png", videoSize,
                                              pictureWidth, fromX, toX, 12));

        // Three faces about 30 pixels wide at the left, one 140 pixels wide at the right.
        QImage scene(videoSize, QImage::Format_RGB32);
        scene.fill(QColor(128, 128, 128));
        const TestFaces::Photo group = TestFaces::photos().at(4); // sample3.jpg: three faces
        QCOMPARE(group.faces.size(), 3);
        const QImage groupImage = TestFaces::load(group);
        QVERIFY(!groupImage.isNull());
        QPainter painter(&scene);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const double groupScale = 30.0 / (group.faces.first().width() * groupImage.width());
        painter.drawImage(QRectF(QPointF(40, 220), groupImage.size() * groupScale), groupImage);
        const double singleScale
            = 140.0 / (astronaut.faces.first().width() * astronautImage.width());
        const QSizeF single = astronautImage.size() * singleScale;
        painter.drawImage(QRectF(QPointF(videoSize.width() - single.width(), 0), single),
                          astronautImage);
        painter.end();
        QVERIFY(scene.save(media("group-and-one.png")));
        QVERIFY(TestMedia::makeStill(media("group-and-one.mp4"), media("group-and-one.png"),
                                     videoSize, 30));

        m_player = std::make_unique<MpvPlayer>();
        m_view = std::make_unique<PlayerHostingView>();
        m_view->resize(viewSize);
        m_view->setPlayer(m_player.get());
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        QTRY_VERIFY(m_view->isReady());
    }

    void init()
    {
        m_view->setFaceDetectorFactory(&FaceDetectors::makeDefault);
        m_view->setDisplayMode(Mode::fill); // resets the pan
        m_view->setDisplayMode(Mode::normal);
    }

    void cleanupTestCase()
    {
        m_view.reset();
        m_player.reset();
    }

    void theLargestFaceIsFollowedNotTheGroup()
    {
        QVERIFY(play(media("group-and-one.mp4")));
        QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
        m_view->setDisplayMode(Mode::smart);
        // The single face sits right of centre: the window moves right (negative pan), and
        // never towards the group at the left.
        QTRY_VERIFY_WITH_TIMEOUT(m_view->horizontalPan() < -0.25, 8000);
        picture("smart-reframe-largest-face");
        for (const QList<QVariant> &step : std::as_const(pans))
            QVERIFY2(step.at(0).toDouble() <= 0, qPrintable(step.at(0).toString()));
        m_player->pause();
    }

    void aSmallFaceWalkingAcrossIsFollowedWithoutStallingTheWindow()
    {
        // The same stretch of the walk in Normal, then in Smart Reframe, measured once it plays;
        // three rounds, the modes taking turns. A stall the detection causes comes back in every
        // round of the mode; a moment the machine is busy elsewhere does not, so each mode's
        // least longest stall is compared.
        const auto watch = [this](Mode mode) {
            m_view->setDisplayMode(mode);
            if (!play(media("walk.mp4")))
                return -1.0;
            return longestStallMs([] { QTest::qWait(11000); });
        };
        QList<double> normalStalls;
        QList<double> smartStalls;
        QList<double> panSteps; // of the first round in Smart Reframe
        for (int round = 0; round < 3; ++round) {
            normalStalls.append(watch(Mode::normal));
            QVERIFY(normalStalls.last() >= 0);
            m_view->setDisplayMode(Mode::fill);
            QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
            smartStalls.append(watch(Mode::smart));
            QVERIFY(smartStalls.last() >= 0);
            if (round > 0)
                continue;
            picture("smart-reframe-walk-end");
            for (const QList<QVariant> &step : std::as_const(pans))
                panSteps.append(step.at(0).toDouble());
            QVERIFY2(m_view->horizontalPan() < -0.3,
                     qPrintable(QString::number(m_view->horizontalPan())));
        }
        m_player->pause();
        const double normalStall = *std::min_element(normalStalls.begin(), normalStalls.end());
        const double smartStall = *std::min_element(smartStalls.begin(), smartStalls.end());
        qInfo("longest stalls of the window's thread, by round: Normal %.1f / %.1f / %.1f ms, "
              "Smart Reframe %.1f / %.1f / %.1f ms",
              normalStalls[0], normalStalls[1], normalStalls[2], smartStalls[0], smartStalls[1],
              smartStalls[2]);
        QVERIFY(panSteps.size() >= 8);
        // Where each step says the face was: the target it took 35 % of the way to.
        QList<double> targets;
        double previous = 0;
        for (const double pan : std::as_const(panSteps)) {
            targets.append(previous + (pan - previous) / SmartReframe::smoothing);
            previous = pan;
        }
        // The face starts in the left third (target +2/3: the window goes left) and ends in the
        // right third (-2/3), moving one way: no step finds it further left than a step before
        // by more than a tenth of the picture.
        QVERIFY2(targets.first() > 0.4, qPrintable(QString::number(targets.first())));
        QVERIFY2(targets.last() < -0.4, qPrintable(QString::number(targets.last())));
        for (qsizetype i = 1; i < targets.size(); ++i) {
            QVERIFY2(targets[i] <= targets[i - 1] + 0.2,
                     qPrintable(QStringLiteral("step %1: %2 after %3")
                                    .arg(i)
                                    .arg(targets[i])
                                    .arg(targets[i - 1])));
        }
        QVERIFY2(
            smartStall <= normalStall + 5,
            qPrintable(QStringLiteral("%1 ms against %2 ms").arg(smartStall).arg(normalStall)));
    }

    void detectionRunsBesideTheWindowOnePictureAtATime()
    {
        SlowFaceLog log;
        m_view->setFaceDetectorFactory([&log] { return std::make_unique<SlowFace>(&log, 1000); });
        QVERIFY(play(media("walk.mp4")));
        QElapsedTimer clock;
        clock.start();
        m_view->setDisplayMode(Mode::smart);
        QTest::qWait(4500);
        const qint64 elapsed = clock.elapsed();
        m_player->pause();
        QTRY_VERIFY(!m_view->isFindingFaces());
        // Ten samples were due; one ran at a time and those due meanwhile were skipped.
        QVERIFY2(log.calls >= 2, qPrintable(QString::number(log.calls)));
        QVERIFY2(log.calls <= elapsed / 1000 + 1, qPrintable(QString::number(log.calls)));
        QCOMPARE(log.mostAtOnce.load(), 1);
        QVERIFY(!log.onWindowThread);
    }

    void aResultForAnEarlierItemIsDropped()
    {
        SlowFaceLog log;
        m_view->setFaceDetectorFactory([&log] { return std::make_unique<SlowFace>(&log, 1500); });
        QVERIFY(play(media("walk.mp4")));
        QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
        m_view->setDisplayMode(Mode::smart);
        QTRY_VERIFY_WITH_TIMEOUT(m_view->isFindingFaces(), 3000);
        // Another item while the first one's picture is searched: its face is not followed.
        QVERIFY(play(media("group-and-one.mp4")));
        m_player->pause();
        QTRY_VERIFY_WITH_TIMEOUT(log.calls >= 1 && !m_view->isFindingFaces(), 5000);
        QCOMPARE(pans.count(), 0);
        QCOMPARE(m_view->horizontalPan(), 0.0);
    }

    void aResultForAnEarlierModeIsDropped()
    {
        SlowFaceLog log;
        m_view->setFaceDetectorFactory([&log] { return std::make_unique<SlowFace>(&log, 1500); });
        QVERIFY(play(media("walk.mp4")));
        QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
        m_view->setDisplayMode(Mode::smart);
        QTRY_VERIFY_WITH_TIMEOUT(m_view->isFindingFaces(), 3000);
        m_view->setDisplayMode(Mode::manual);
        QTRY_VERIFY_WITH_TIMEOUT(!m_view->isFindingFaces(), 5000);
        m_player->pause();
        QCOMPARE(pans.count(), 0);
        QCOMPARE(m_view->horizontalPan(), 0.0);
    }

    void theViewGoesWhileAPictureIsSearched()
    {
        SlowFaceLog log;
        auto player = std::make_unique<MpvPlayer>();
        auto view = std::make_unique<PlayerHostingView>();
        view->resize(viewSize);
        view->setPlayer(player.get());
        view->setFaceDetectorFactory([&log] { return std::make_unique<SlowFace>(&log, 800); });
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        QTRY_VERIFY(view->isReady());
        player->replaceCurrentItem(QUrl::fromLocalFile(media("walk.mp4")));
        player->play();
        view->setDisplayMode(Mode::smart);
        QTRY_VERIFY_WITH_TIMEOUT(view->isFindingFaces(), 5000);
        // The player first, then the view: the frame grabber lets go of mpv in time.
        player.reset();
        QVERIFY(!view->isFindingFaces());
        view.reset();
        QVERIFY(log.running == 0);
    }
};

QTEST_MAIN(TestSmartReframeView)
#include "tst_smartreframeview.moc"
