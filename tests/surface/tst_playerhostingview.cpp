#include "mediaprobe.h"
#include "testfaces.h"
#include "testmedia.h"

#include "model/mpvplayer.h"
#include "model/playernotifications.h"
#include "surface/facedetector.h"
#include "surface/facedetectors.h"
#include "surface/playerhostingview.h"
#include "surface/smartreframe.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTemporaryDir>
#include <QTest>
#include <mpv/client.h>

using Mode = PortraitDisplayMode;

namespace {
constexpr QSize viewSize(640, 360);

// The colour of a pixel as one letter: r, g, b, w(hite), k (black) or ? for anything else.
char colourAt(const QImage &image, int x, int y)
{
    const QColor c = image.pixelColor(x, y);
    const int r = c.red(), g = c.green(), b = c.blue();
    if (r < 40 && g < 40 && b < 40)
        return 'k';
    if (r > 200 && g > 200 && b > 200)
        return 'w';
    if (r > 150 && g < 90 && b < 90)
        return 'r';
    if (g > 150 && r < 90 && b < 90)
        return 'g';
    if (b > 150 && r < 90 && g < 90)
        return 'b';
    return '?';
}

// The first and last column of row y that are not black.
std::pair<int, int> litSpan(const QImage &image, int y)
{
    int first = -1, last = -1;
    for (int x = 0; x < image.width(); ++x) {
        if (colourAt(image, x, y) != 'k') {
            if (first < 0)
                first = x;
            last = x;
        }
    }
    return {first, last};
}

void drag(QWidget *widget, double fromX, double toX)
{
    const int y = widget->height() / 2;
    QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(int(fromX), y));
    QTest::mouseMove(widget, QPoint(int((fromX + toX) / 2), y));
    QTest::mouseMove(widget, QPoint(int(toX), y));
    QTest::mouseRelease(widget, Qt::LeftButton, {}, QPoint(int(toX), y));
}

// A double click as the window system delivers it: a click, then a double-click event in place
// of the second press, then its release.
void doubleClick(QWidget *widget, QPoint position)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, position);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, position);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, position);
}
} // namespace

class TestPlayerHostingView : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    std::unique_ptr<MpvPlayer> m_player;
    std::unique_ptr<PlayerHostingView> m_view;
    QString m_screenshots;

    QString media(const QString &name) const { return m_media.filePath(name); }

    // Opens file, waits for its picture and pauses on it.
    bool showPicture(const QString &file)
    {
        QSignalSpy frames(m_view.get(), &PlayerHostingView::frameDrawn);
        m_player->replaceCurrentItem(QUrl::fromLocalFile(file));
        m_player->play();
        if (!QTest::qWaitFor(
                [&] { return frames.count() > 1 && m_player->presentationSize().isValid(); },
                15000))
            return false;
        m_player->pause();
        // mpv may still show a frame it had queued when the pause came (0.40 does, 0.35 rarely),
        // and x264 draws each frame of a still scene a little differently: wait until no new
        // frame comes, so that the pictures compared are of one frame.
        for (int quiet = 0; quiet < 40; ++quiet) {
            frames.clear();
            QTest::qWait(150);
            if (frames.isEmpty())
                return true;
        }
        return false;
    }

    QImage picture(const QString &screenshotName = {})
    {
        const QImage image = m_view->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
        if (!screenshotName.isEmpty())
            image.save(QDir(m_screenshots).filePath(screenshotName + QStringLiteral(".png")));
        return image;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        m_screenshots
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(m_screenshots);
        QVERIFY(TestMedia::makeColourThirds(media("thirds.mp4"), {640, 360}));
        QVERIFY(TestMedia::makeColourThirds(media("portrait.mp4"), {288, 640}));
        QVERIFY(TestMedia::makeColourThirds(media("square-ish.mp4"), {360, 640}));
        QVERIFY(TestMedia::makeRotated(media("thirds.mp4"), media("thirds-upright.mp4"), 90));
        const QString face = TestFaces::directory() + "/astronaut.png";
        QVERIFY2(QFile::exists(face), "run ./lumo setup");
        QVERIFY(TestMedia::makeMovingPicture(media("face.mp4"), face, {1280, 720}, 2.5, 3));
        QVERIFY(TestMedia::makeMovingPicture(media("face-stays.mp4"), face, {1280, 720}, 30, 1));
        QVERIFY(TestMedia::makeTracks(media("subtitled.mkv"), 30, false, true, {640, 360},
                                      QStringLiteral("Upright and whole\nin every mode")));

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
        // Every test starts centred: entering fill resets the pan.
        m_view->setDisplayMode(Mode::fill);
        m_view->setDisplayMode(Mode::normal);
        m_view->resize(viewSize);
        QTRY_COMPARE(m_view->size(), viewSize);
    }

    void cleanupTestCase()
    {
        m_view.reset();
        m_player.reset();
    }

    void videoIsDecodedOnTheGpuWhereItSafelyCanAndElseOnTheCpu()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        char *requested = mpv_get_property_string(m_player->handle(), "hwdec");
        QCOMPARE(QByteArray(requested), QByteArray("auto-safe"));
        mpv_free(requested);
        // This machine has no GPU: the picture is drawn all the same, decoded on the CPU.
        QCOMPARE(m_player->hardwareDecoder(), QStringLiteral("no"));
        const QImage shown = picture();
        QVERIFY(!shown.isNull());
    }

    void aFailedItemLeavesNoEarlierFrameBehind()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        const QRgb before = picture().pixel(viewSize.width() / 2, viewSize.height() / 2);
        QVERIFY(qRed(before) + qGreen(before) + qBlue(before) > 150);
        QSignalSpy failures(m_player.get(), &MediaPlayer::playbackFailed);
        m_player->replaceCurrentItem(QUrl::fromLocalFile(media("missing.mp4")));
        QTRY_COMPARE_WITH_TIMEOUT(failures.count(), 1, 10000);
        QTRY_VERIFY(!m_player->hasItem());
        const QImage shown = picture(QStringLiteral("failed-item"));
        for (const int x : {viewSize.width() / 6, viewSize.width() / 2, viewSize.width() * 5 / 6})
            QCOMPARE(shown.pixel(x, viewSize.height() / 2), qRgb(0, 0, 0));
    }

    void subtitlesStayUprightAndWholeInEveryMode_data()
    {
        QTest::addColumn<Mode>("mode");
        for (const Mode mode : PortraitDisplayModes::allCases)
            QTest::newRow(qPrintable(PortraitDisplayModes::title(mode))) << mode;
    }

    void subtitlesStayUprightAndWholeInEveryMode()
    {
        QFETCH(Mode, mode);
        m_view->setDisplayMode(mode);
        QVERIFY(showPicture(media("subtitled.mkv")));
        QTRY_COMPARE(m_player->subtitleText(), QStringLiteral("Upright and whole\nin every mode"));
        QTest::qWait(300);
        const QImage shown = picture(
            QStringLiteral("subtitles-")
            + PortraitDisplayModes::title(mode).toLower().replace(u' ', u'-').remove(QChar(0xb0)));
        // The white of the letters on the black picture.
        const QRect letters = MediaProbe::whiteArea(shown);
        QVERIFY2(!letters.isEmpty(), "no subtitle drawn");
        const QRect visible = m_view->playerLayerFrame().crop.toAlignedRect();
        QVERIFY2(visible.adjusted(-1, -1, 1, 1).contains(letters),
                 qPrintable(QStringLiteral("letters %1,%2 %3x%4 outside the picture")
                                .arg(letters.x())
                                .arg(letters.y())
                                .arg(letters.width())
                                .arg(letters.height())));
        // Upright lines near the bottom of what is seen: wider than tall, in its lower half.
        QVERIFY2(letters.width() > letters.height(),
                 qPrintable(QStringLiteral("%1x%2").arg(letters.width()).arg(letters.height())));
        QVERIFY(letters.top() > visible.center().y());
        // Not cut at the sides: a margin of black on either side of the lines.
        QVERIFY(letters.left() > visible.left() + 2);
        QVERIFY(letters.right() < visible.right() - 2);
        m_player->replaceCurrentItem(std::nullopt);
    }

    void normalShowsTheWholePicture()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        const QImage image = picture("mode-normal");
        QCOMPARE(colourAt(image, 100, 200), 'r');
        QCOMPARE(colourAt(image, 320, 200), 'g');
        QCOMPARE(colourAt(image, 540, 200), 'b');
        QCOMPARE(colourAt(image, 320, 10), 'w');
        QCOMPARE(colourAt(image, 320, 45), 'g');
        QCOMPARE(litSpan(image, 200), std::make_pair(0, 639));
        QCOMPARE(m_view->recordingRectInView(), QRectF(0, 0, 640, 360));

        // What smart reframe samples is the same picture, upright and scaled down.
        const QImage sample = m_view->samplePicture(64);
        QCOMPARE(sample.size(), QSize(64, 36));
        QCOMPARE(colourAt(sample, 32, 1), 'w');
        QCOMPARE(colourAt(sample, 5, 25), 'r');
        QCOMPARE(colourAt(sample, 32, 25), 'g');
        QCOMPARE(colourAt(sample, 58, 25), 'b');
    }

    void fillShowsTheZoomedMiddleThroughTheCrop()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::fill);
        const QImage image = picture("mode-portrait-fill");
        // 9/16 of 360 is 202.5 wide, from 218.75 to 421.25.
        const auto [first, last] = litSpan(image, 200);
        QVERIFY2(qAbs(first - 219) <= 1, qPrintable(QString::number(first)));
        QVERIFY2(qAbs(last - 420) <= 1, qPrintable(QString::number(last)));
        QCOMPARE(colourAt(image, 230, 200), 'g');
        QCOMPARE(colourAt(image, 410, 200), 'g');
        // Zoomed by 1.13 about the centre, the top band (36 points unzoomed) shows only its
        // lower 17.3 points.
        QCOMPARE(colourAt(image, 320, 12), 'w');
        QCOMPARE(colourAt(image, 320, 24), 'g');
        QCOMPARE(m_view->recordingRectInView(), QRectF(218.75, 0, 202.5, 360));
    }

    void rotateTurnsThePictureAQuarterClockwise()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::rotate);
        const QImage image = picture("mode-portrait-rotate");
        const auto [first, last] = litSpan(image, 180);
        QVERIFY(qAbs(first - 219) <= 1);
        QVERIFY(qAbs(last - 420) <= 1);
        // Left of the picture on top, right at the bottom, its top band along the right edge.
        QCOMPARE(colourAt(image, 300, 60), 'r');
        QCOMPARE(colourAt(image, 300, 180), 'g');
        QCOMPARE(colourAt(image, 300, 300), 'b');
        QCOMPARE(colourAt(image, 414, 180), 'w');
        QCOMPARE(colourAt(image, 226, 180), 'g');
    }

    void manualPanShowsEitherEdge()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::manual);
        QCOMPARE(m_view->horizontalPan(), 0.0);
        QImage image = picture("mode-manual-reframe-centre");
        QCOMPARE(colourAt(image, 320, 200), 'g');

        // 35 % of the view's width moves the pan a whole unit: to +1, the left edge.
        drag(m_view.get(), 100, 100 + 640 * 0.35);
        QCOMPARE(m_view->horizontalPan(), 1.0);
        image = picture("mode-manual-reframe-left");
        QCOMPARE(colourAt(image, 225, 200), 'r');
        QCOMPARE(colourAt(image, 400, 200), 'r');

        // Far beyond the edge: exactly -1, the right edge.
        drag(m_view.get(), 600, -5000);
        QCOMPARE(m_view->horizontalPan(), -1.0);
        image = picture("mode-manual-reframe-right");
        QCOMPARE(colourAt(image, 240, 200), 'b');
        QCOMPARE(colourAt(image, 415, 200), 'b');
        QCOMPARE(m_view->recordingRectInView(), QRectF(218.75, 0, 202.5, 360));
    }

    void portraitVideoFitsTheWidthAndIgnoresThePan()
    {
        QVERIFY(showPicture(media("portrait.mp4")));
        m_view->setDisplayMode(Mode::manual);
        const QImage before = picture("mode-manual-reframe-portrait-video");
        // All three thirds across the crop, the top band cut off: fitted to the width and
        // centred on a picture taller than the crop.
        QCOMPARE(colourAt(before, 219 + 25, 200), 'r');
        QCOMPARE(colourAt(before, 219 + 100, 200), 'g');
        QCOMPARE(colourAt(before, 219 + 180, 200), 'b');
        QCOMPARE(colourAt(before, 219 + 100, 3), 'g');
        const double pan = m_view->horizontalPan();
        drag(m_view.get(), 300, 400);
        QVERIFY(m_view->horizontalPan() != pan);
        QCOMPARE(picture(), before);
    }

    void aTurnedVideoIsLaidOutInItsShownShape()
    {
        // Stored 640 × 360, shown upright: a portrait picture, which manual reframe fits to
        // the width and does not pan.
        QVERIFY(showPicture(media("thirds-upright.mp4")));
        QCOMPARE(m_player->presentationSize(), QSize(360, 640));
        m_view->setDisplayMode(Mode::manual);
        QCOMPARE(m_view->playerLayerFrame(),
                 DisplayGeometry::layout(Mode::manual, QSizeF(viewSize), QSizeF(360, 640), 0));
        const QImage before = picture("mode-manual-reframe-turned-video");
        // Turned a quarter, the thirds run from top to bottom across the whole crop.
        const int middle = 320;
        QVERIFY(colourAt(before, middle, 60) != colourAt(before, middle, 300));
        const double pan = m_view->horizontalPan();
        drag(m_view.get(), 300, 400);
        QVERIFY(m_view->horizontalPan() != pan);
        QCOMPARE(picture(), before);
    }

    void equalAspectVideoFillsTheCrop()
    {
        QVERIFY(showPicture(media("square-ish.mp4")));
        m_view->setDisplayMode(Mode::manual);
        const QImage image = picture();
        QCOMPARE(colourAt(image, 225, 200), 'r');
        QCOMPARE(colourAt(image, 415, 200), 'b');
    }

    void modeChangesKeepOrResetThePan()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::manual);
        drag(m_view.get(), 300, 300 + 640 * 0.35 * 0.5);
        QCOMPARE(m_view->horizontalPan(), 0.5);
        m_view->setDisplayMode(Mode::normal);
        m_view->setDisplayMode(Mode::manual);
        QCOMPARE(m_view->horizontalPan(), 0.5);
        m_view->setDisplayMode(Mode::fill);
        QCOMPARE(m_view->horizontalPan(), 0.0);
        m_view->setDisplayMode(Mode::manual);
        QCOMPARE(m_view->horizontalPan(), 0.0);
        drag(m_view.get(), 300, 300 - 640 * 0.35 * 0.25);
        m_view->setDisplayMode(Mode::rotate);
        QCOMPARE(m_view->horizontalPan(), 0.0);
    }

    void choosingTheActiveModeRedoesTheLayout()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::fill);
        QSignalSpy swaps(m_view.get(), &QOpenGLWidget::frameSwapped);
        // Paused, the view draws nothing by itself.
        QVERIFY(QTest::qWaitFor([&] { return !swaps.wait(400); }, 5000));
        swaps.clear();
        m_view->setDisplayMode(Mode::fill);
        QTRY_VERIFY(swaps.count() > 0);
        QCOMPARE(m_view->displayMode(), Mode::fill);
        QCOMPARE(m_view->playerLayerFrame(),
                 DisplayGeometry::layout(Mode::fill, QSizeF(viewSize), QSizeF(640, 360), 0));
    }

    void fillScreenOnlyRedoesTheLayout()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::fill);
        const DisplayGeometry::PlayerLayerFrame before = m_view->playerLayerFrame();
        QSignalSpy swaps(m_view.get(), &QOpenGLWidget::frameSwapped);
        QVERIFY(QTest::qWaitFor([&] { return !swaps.wait(400); }, 5000));
        swaps.clear();
        m_view->setFillScreen(true);
        QVERIFY(m_view->fillScreen());
        // Drawn again, in the same layout.
        QTRY_VERIFY(swaps.count() > 0);
        QCOMPARE(m_view->playerLayerFrame(), before);
        QVERIFY(QTest::qWaitFor([&] { return !swaps.wait(400); }, 5000));
        swaps.clear();
        m_view->setFillScreen(false);
        QVERIFY(!m_view->fillScreen());
        QTRY_VERIFY(swaps.count() > 0);
        QCOMPARE(m_view->playerLayerFrame(), before);
    }

    void zeroHeightGivesAnEmptyCropInTheMiddle()
    {
        QVERIFY(showPicture(media("thirds.mp4")));
        m_view->setDisplayMode(Mode::manual);
        m_view->setMinimumSize(0, 0);
        m_view->resize(640, 0);
        QTRY_COMPARE(m_view->height(), 0);
        QCOMPARE(m_view->recordingRectInView(), QRectF(320, 0, 0, 0));
        m_view->setMinimumSize(1, 1);
    }

    void smartTimerExistsOnlyInSmartMode()
    {
        QVERIFY(!m_view->hasSmartTimer());
        m_view->setDisplayMode(Mode::smart);
        QVERIFY(m_view->hasSmartTimer());
        m_view->setDisplayMode(Mode::manual);
        QVERIFY(!m_view->hasSmartTimer());
        m_view->setDisplayMode(Mode::smart);
        m_view->setDisplayMode(Mode::normal);
        QVERIFY(!m_view->hasSmartTimer());
    }

    void smartReframeFollowsAFaceFromLeftToRight()
    {
        m_view->setDisplayMode(Mode::manual);
        drag(m_view.get(), 300, 300); // a click: the pan stays
        m_view->setDisplayMode(Mode::normal);
        QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
        QVERIFY(showPicture(media("face.mp4")));
        m_player->seekExactly(0);
        m_view->setDisplayMode(Mode::smart);
        // No step runs at once.
        QCOMPARE(pans.count(), 0);
        m_player->play();
        // The face starts left of centre (the pan goes positive) and ends right of it.
        QTRY_VERIFY_WITH_TIMEOUT(m_view->horizontalPan() > 0.3, 5000);
        picture("mode-smart-reframe-face-left");
        QTRY_VERIFY_WITH_TIMEOUT(m_view->horizontalPan() < -0.2 || !m_player->isPlaying(), 12000);
        QVERIFY(m_view->horizontalPan() < -0.2);
        picture("mode-smart-reframe-face-right");
        // Each step covered 35 % of the way to where the face was: the target each step implies
        // is a place in the picture, which a jump straight there would not give.
        QVERIFY(pans.count() >= 4);
        double previous = 0;
        for (const QList<QVariant> &step : std::as_const(pans)) {
            const double pan = step.at(0).toDouble();
            const double target = previous + (pan - previous) / SmartReframe::smoothing;
            QVERIFY2(qAbs(target) <= 1 + 1e-9, qPrintable(QString::number(target)));
            previous = pan;
        }
        m_player->pause();
    }

    void eachSmartStepCoversAThirdOfTheWayAndABit()
    {
        // A detector that always sees one face, left of centre, so that every step's target is
        // known.
        class FixedFace final : public FaceDetector
        {
        public:
            QList<QRectF> detect(const QImage &) override { return {QRectF(0.1, 0.3, 0.2, 0.2)}; }
            QString name() const override { return QStringLiteral("fixed"); }
        };
        m_view->setFaceDetectorFactory([] { return std::make_unique<FixedFace>(); });
        QVERIFY(showPicture(media("face-stays.mp4")));
        QSignalSpy pans(m_view.get(), &PlayerHostingView::horizontalPanChanged);
        m_view->setDisplayMode(Mode::smart);
        m_player->play();
        QTRY_VERIFY_WITH_TIMEOUT(pans.count() >= 4, 10000);
        m_player->pause();
        const double target = SmartReframe::targetPan(QRectF(0.1, 0.3, 0.2, 0.2));
        QVERIFY(target > 0.5);
        double expected = 0;
        for (int i = 0; i < 4; ++i) {
            expected += 0.35 * (target - expected);
            QVERIFY2(qAbs(pans.at(i).at(0).toDouble() - expected) < 1e-9,
                     qPrintable(QStringLiteral("step %1: %2, not %3")
                                    .arg(i)
                                    .arg(pans.at(i).at(0).toDouble())
                                    .arg(expected)));
        }
        m_view->setFaceDetectorFactory(&FaceDetectors::makeDefault);
    }

    void pausedVideoKeepsItsPan()
    {
        QVERIFY(showPicture(media("face-stays.mp4")));
        m_view->setDisplayMode(Mode::smart);
        m_player->play();
        QTRY_VERIFY_WITH_TIMEOUT(m_view->horizontalPan() > 0.2, 5000);
        m_player->pause();
        // The first step after pausing may still read the last frame shown; then none comes.
        QTest::qWait(1000);
        const double pan = m_view->horizontalPan();
        const quint64 frames = m_view->drawnFrameCount();
        QTest::qWait(1500);
        QCOMPARE(m_view->horizontalPan(), pan);
        QCOMPARE(m_view->drawnFrameCount(), frames);
        QVERIFY(m_view->hasSmartTimer());
    }

    void noFaceDriftsBackToTheCentre()
    {
        QVERIFY(showPicture(media("face-stays.mp4")));
        m_view->setDisplayMode(Mode::smart);
        m_player->play();
        QTRY_VERIFY_WITH_TIMEOUT(m_view->horizontalPan() > 0.2, 5000);
        const double start = m_view->horizontalPan();
        // The same video without its face: the grey alone.
        QVERIFY(TestMedia::makeColourThirds(media("no-face.mp4"), {1280, 720}, 30));
        QVERIFY(showPicture(media("no-face.mp4")));
        m_player->play();
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_view->horizontalPan()) < start * 0.65 * 0.65, 5000);
        QVERIFY(m_view->horizontalPan() >= 0);
        m_player->pause();
    }

    void aClickPostsAndAMoveWithTheButtonDownDragsTheWindow()
    {
        int windowDrags = 0;
        m_view->setWindowDragHandler([&](QWindow *) { ++windowDrags; });
        QSignalSpy clicks(&PlayerNotifications::shared(),
                          &PlayerNotifications::playerSurfaceClicked);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(50, 50));
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(clicks.at(0).at(0).value<QWindow *>(), m_view->windowHandle());
        // A click alone leaves the window where it is, and its release to the view.
        QCOMPARE(windowDrags, 0);

        // A press, then a move shorter than the drag distance: still a click.
        const int distance = QGuiApplication::styleHints()->startDragDistance();
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, QPoint(50, 50));
        QMouseEvent small(QEvent::MouseMove, QPointF(50 + distance - 1, 50),
                          m_view->mapToGlobal(QPointF(50 + distance - 1, 50)), Qt::NoButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(m_view.get(), &small);
        QCOMPARE(windowDrags, 0);
        // Far enough: the window moves, once however far the pointer goes on.
        for (int x : {50 + distance + 1, 120, 200}) {
            QMouseEvent far(QEvent::MouseMove, QPointF(x, 50), m_view->mapToGlobal(QPointF(x, 50)),
                            Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(m_view.get(), &far);
        }
        QCOMPARE(windowDrags, 1);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(200, 50));
        QCOMPARE(clicks.count(), 2);

        // In manual reframe a drag pans the picture and never drags the window.
        m_view->setDisplayMode(Mode::manual);
        drag(m_view.get(), 50, 200);
        QCOMPARE(clicks.count(), 3);
        QCOMPARE(windowDrags, 1);
        m_view->setWindowDragHandler(nullptr);
    }

    void doubleClickTogglesFullScreenAndPostsNothing()
    {
        m_view->setDisplayMode(Mode::manual);
        QSignalSpy clicks(&PlayerNotifications::shared(),
                          &PlayerNotifications::playerSurfaceClicked);
        const double pan = m_view->horizontalPan();
        QVERIFY(!m_view->isFullScreen());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(100, 100));
        QTest::mouseDClick(m_view.get(), Qt::LeftButton, {}, QPoint(100, 100));
        // A double click never starts a drag: moving now changes nothing.
        QTest::mouseMove(m_view.get(), QPoint(400, 100));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(400, 100));
        QCOMPARE(clicks.count(), 1); // the first click only
        QVERIFY(m_view->isFullScreen());
        QCOMPARE(m_view->horizontalPan(), pan);

        doubleClick(m_view.get(), QPoint(100, 100));
        QVERIFY(!m_view->isFullScreen());
        QCOMPARE(clicks.count(), 2); // the first click of the second double click
    }

    void tripleClickCountsAsASingleClick()
    {
        QSignalSpy clicks(&PlayerNotifications::shared(),
                          &PlayerNotifications::playerSurfaceClicked);
        m_view->setWindowDragHandler([](QWindow *) {});
        doubleClick(m_view.get(), QPoint(100, 100));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(100, 100));
        QCOMPARE(clicks.count(), 2);
        if (m_view->isFullScreen())
            m_view->showNormal();
        m_view->setWindowDragHandler(nullptr);
    }
};

QTEST_MAIN(TestPlayerHostingView)
#include "tst_playerhostingview.moc"
