#include "recording/capturegeometry.h"

#include <QTest>

using namespace CaptureGeometry;

namespace {
const QRectF screen1080(0, 0, 1920, 1080);

// A window whose surface fills it, the surface given y-downward as a Qt view would report it.
std::variant<CapturePlan, RecorderError> planFor(const QRectF &windowFrame,
                                                 const QList<QRectF> &displays,
                                                 const QRectF &surfaceDown, double scale,
                                                 PlayerRecordingQuality quality)
{
    ShareableContent content;
    content.windows = {{7, QRectF(5000, 5000, 10, 10)}, {42, windowFrame}};
    content.displays = displays;
    return plan(content, 42, flippedInWindow(surfaceDown, windowFrame.height()), scale, quality);
}
} // namespace

class TestCaptureGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outputSizesFollowQualityAndScale()
    {
        QCOMPARE(outputDimensions({1000, 500}, 2, PlayerRecordingQuality::normal),
                 QSize(2000, 1000));
        QCOMPARE(outputDimensions({1000, 500}, 2, PlayerRecordingQuality::hd), QSize(1920, 960));
        // A portrait area fills the upright box, scaled up past its own size (factor 3.2).
        QCOMPARE(outputDimensions({300, 600}, 2, PlayerRecordingQuality::hd), QSize(960, 1920));
        QCOMPARE(outputDimensions({300, 600}, 1, PlayerRecordingQuality::hd), QSize(960, 1920));
        QCOMPARE(outputDimensions({300, 600}, 1, PlayerRecordingQuality::normal), QSize(300, 600));
        // A square counts as landscape.
        QCOMPARE(outputDimensions({500, 500}, 1, PlayerRecordingQuality::hd), QSize(1080, 1080));
    }

    void dimensionsAreEvenAndAtLeastTwo()
    {
        QCOMPARE(evenDimension(1001), 1000);
        QCOMPARE(evenDimension(1), 2);
        QCOMPARE(evenDimension(0), 2);
        // Halves round away from zero before the even step.
        QCOMPARE(evenDimension(2.5), 2);
        QCOMPARE(evenDimension(3.5), 4);
        QCOMPARE(evenDimension(1001.5), 1002);
        QCOMPARE(evenDimension(1000.49), 1000);
        QCOMPARE(outputDimensions({500.5, 300.25}, 2, PlayerRecordingQuality::normal),
                 QSize(1000, 600));
    }

    void captureAreaIsDisplayLocalWithYDownward()
    {
        // A window at (100, 50), 800 x 600, whose surface is its top 566 points (a 34-point bar
        // below it): y upward, the surface starts 34 up from the bottom.
        const QRectF area
            = captureArea(QRectF(100, 50, 800, 600), screen1080, QRectF(0, 34, 800, 566));
        QCOMPARE(area, QRectF(100, 50, 800, 566));
        // On a second display to the right, the display's origin is taken off.
        QCOMPARE(captureArea(QRectF(2020, 50, 800, 600), QRectF(1920, 0, 1280, 1024),
                             QRectF(0, 34, 800, 566)),
                 QRectF(100, 50, 800, 566));
        QCOMPARE(flippedInWindow(QRectF(0, 0, 800, 566), 600), QRectF(0, 34, 800, 566));
    }

    void planSizesTheSurfaceOfTheWindow()
    {
        const auto result = planFor(QRectF(100, 100, 1000, 534), {screen1080},
                                    QRectF(0, 0, 1000, 500), 2, PlayerRecordingQuality::normal);
        const auto *captured = std::get_if<CapturePlan>(&result);
        QVERIFY(captured);
        QCOMPARE(captured->area, QRectF(100, 100, 1000, 500));
        QCOMPARE(captured->outputSize, QSize(2000, 1000));
        QCOMPARE(captured->displayIndex, 0);
    }

    void areaPartlyOffTheDisplayIsClippedFirst()
    {
        // The window hangs 200 points off the right edge: 800 of its 1000 points are recorded.
        const auto result = planFor(QRectF(1120, 100, 1000, 534), {screen1080},
                                    QRectF(0, 0, 1000, 500), 1, PlayerRecordingQuality::normal);
        const auto *captured = std::get_if<CapturePlan>(&result);
        QVERIFY(captured);
        QCOMPARE(captured->area, QRectF(1120, 100, 800, 500));
        QCOMPARE(captured->outputSize, QSize(800, 500));
        const auto hd = planFor(QRectF(1120, 100, 1000, 534), {screen1080}, QRectF(0, 0, 1000, 500),
                                1, PlayerRecordingQuality::hd);
        QCOMPARE(std::get<CapturePlan>(hd).outputSize, QSize(1728, 1080));
        // Off the top-left corner.
        const auto corner = planFor(QRectF(-100, -50, 600, 400), {screen1080},
                                    QRectF(0, 0, 600, 400), 1, PlayerRecordingQuality::normal);
        QCOMPARE(std::get<CapturePlan>(corner).area, QRectF(0, 0, 500, 350));
    }

    void windowOnTwoDisplaysIsRecordedOnTheLargerPart()
    {
        const QList<QRectF> displays {screen1080, QRectF(1920, 0, 1920, 1080)};
        // 300 points on the first display, 500 on the second.
        const auto result = planFor(QRectF(1620, 100, 800, 400), displays, QRectF(0, 0, 800, 400),
                                    1, PlayerRecordingQuality::normal);
        const auto &second = std::get<CapturePlan>(result);
        QCOMPARE(second.displayIndex, 1);
        QCOMPARE(second.area, QRectF(0, 100, 500, 400));
        // Equal parts: the first display in the list wins.
        const auto tie = planFor(QRectF(1520, 100, 800, 400), displays, QRectF(0, 0, 800, 400), 1,
                                 PlayerRecordingQuality::normal);
        QCOMPARE(std::get<CapturePlan>(tie).displayIndex, 0);
        QCOMPARE(displayIndexForWindow(displays, QRectF(1520, 0, 800, 10)), 0);
        QCOMPARE(
            displayIndexForWindow({QRectF(5000, 0, 10, 10), screen1080}, QRectF(0, 0, 100, 100)),
            1);
        QCOMPARE(displayIndexForWindow({}, QRectF(0, 0, 100, 100)), std::nullopt);
    }

    void thinAreasAreRefused()
    {
        const auto thin = planFor(QRectF(100, 100, 8, 200), {screen1080}, QRectF(0, 0, 8, 200), 1,
                                  PlayerRecordingQuality::normal);
        QCOMPARE(std::get<RecorderError>(thin), RecorderError::invalidCaptureArea);
        QCOMPARE(RecorderErrors::description(RecorderError::invalidCaptureArea),
                 "The video capture area is invalid.");
        const auto flat = planFor(QRectF(100, 100, 200, 8), {screen1080}, QRectF(0, 0, 200, 8), 1,
                                  PlayerRecordingQuality::normal);
        QCOMPARE(std::get<RecorderError>(flat), RecorderError::invalidCaptureArea);
        // Nine points is enough.
        const auto nine = planFor(QRectF(100, 100, 9, 200), {screen1080}, QRectF(0, 0, 9, 200), 1,
                                  PlayerRecordingQuality::normal);
        QVERIFY(std::holds_alternative<CapturePlan>(nine));
        // Clipping can make an area too thin: 6 points left on the display.
        const auto clipped = planFor(QRectF(1914, 100, 300, 200), {screen1080},
                                     QRectF(0, 0, 300, 200), 1, PlayerRecordingQuality::normal);
        QCOMPARE(std::get<RecorderError>(clipped), RecorderError::invalidCaptureArea);
    }

    void missingWindowOrDisplayIsReported()
    {
        ShareableContent content;
        content.windows = {{7, QRectF(0, 0, 100, 100)}};
        content.displays = {screen1080};
        QCOMPARE(std::get<RecorderError>(
                     plan(content, 42, QRectF(0, 0, 50, 50), 1, PlayerRecordingQuality::normal)),
                 RecorderError::playerWindowNotFound);
        content.displays.clear();
        QCOMPARE(std::get<RecorderError>(
                     plan(content, 7, QRectF(0, 0, 50, 50), 1, PlayerRecordingQuality::normal)),
                 RecorderError::playerDisplayNotFound);
        // A window on no display at all.
        content.displays = {screen1080};
        content.windows = {{7, QRectF(3000, 3000, 100, 100)}};
        QCOMPARE(std::get<RecorderError>(
                     plan(content, 7, QRectF(0, 0, 50, 50), 1, PlayerRecordingQuality::normal)),
                 RecorderError::playerDisplayNotFound);
        QCOMPARE(RecorderErrors::description(RecorderError::playerWindowNotFound),
                 "The LumoMediaPlayerPro window could not be captured.");
        QCOMPARE(RecorderErrors::description(RecorderError::playerDisplayNotFound),
                 "The display containing LumoMediaPlayerPro could not be captured.");
    }

    void aPictureIsCutToWhatOfItsViewIsOnItsDisplay()
    {
        const QRectF display(0, 0, 1920, 1080);
        QCOMPARE(CaptureGeometry::pictureCrop({0, 0, 640, 360}, {100, 80, 640, 360}, display, 1),
                 QRect(0, 0, 640, 360));
        // The portrait crop inside the view, on a display twice as dense.
        QCOMPARE(CaptureGeometry::pictureCrop({220, 0, 200, 360}, {100, 80, 640, 360}, display, 2),
                 QRect(440, 0, 400, 720));
        // Partly off the right edge of the display.
        QCOMPARE(CaptureGeometry::pictureCrop({0, 0, 640, 360}, {1700, 80, 640, 360}, display, 1),
                 QRect(0, 0, 220, 360));
        // Wholly off it.
        QVERIFY(CaptureGeometry::pictureCrop({0, 0, 640, 360}, {2000, 80, 640, 360}, display, 1)
                    .isEmpty());
    }

    void aPictureKeepsItsShapeInTheFile_data()
    {
        QTest::addColumn<QSize>("source");
        QTest::addColumn<QSize>("output");
        QTest::addColumn<QRect>("placed");
        QTest::newRow("same shape")
            << QSize(640, 360) << QSize(1920, 1080) << QRect(0, 0, 1920, 1080);
        QTest::newRow("wider: bars above and below")
            << QSize(1000, 360) << QSize(640, 360) << QRect(0, 64, 640, 230);
        QTest::newRow("narrower: bars left and right")
            << QSize(360, 640) << QSize(640, 360) << QRect(218, 0, 202, 360);
        QTest::newRow("smaller: scaled up")
            << QSize(320, 180) << QSize(640, 360) << QRect(0, 0, 640, 360);
    }

    void aPictureKeepsItsShapeInTheFile()
    {
        QFETCH(QSize, source);
        QFETCH(QSize, output);
        QFETCH(QRect, placed);
        QCOMPARE(CaptureGeometry::letterbox(source, output), placed);
    }
};

QTEST_GUILESS_MAIN(TestCaptureGeometry)
#include "tst_capturegeometry.moc"
