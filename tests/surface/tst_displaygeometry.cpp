#include "surface/displaygeometry.h"

#include <QTest>

using namespace DisplayGeometry;
using Mode = PortraitDisplayMode;

namespace {
// The zoom's extra share, computed the same way the product does.
const double k = 1.13 - 1;

bool same(const QRectF &a, const QRectF &b)
{
    return qFuzzyCompare(a.x() + 1, b.x() + 1) && qFuzzyCompare(a.y() + 1, b.y() + 1)
        && qFuzzyCompare(a.width() + 1, b.width() + 1)
        && qFuzzyCompare(a.height() + 1, b.height() + 1);
}
} // namespace

class TestDisplayGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titlesInMenuOrder()
    {
        QStringList titles;
        for (Mode mode : PortraitDisplayModes::allCases)
            titles << PortraitDisplayModes::title(mode);
        QCOMPARE(titles,
                 QStringList({"Normal", "Portrait Fill", "Portrait Rotate 90°", "Manual Reframe",
                              "Smart Reframe"}));
    }

    void titlesMatchWholeAndExactly()
    {
        for (Mode mode : PortraitDisplayModes::allCases)
            QCOMPARE(PortraitDisplayModes::fromTitle(PortraitDisplayModes::title(mode)), mode);
        QCOMPARE(PortraitDisplayModes::fromTitle(u"normal"), std::nullopt);
        QCOMPARE(PortraitDisplayModes::fromTitle(u"Normal "), std::nullopt);
        QCOMPARE(PortraitDisplayModes::fromTitle(u"Portrait Rotate 90"), std::nullopt);
        QCOMPARE(PortraitDisplayModes::fromTitle(u""), std::nullopt);
    }

    void normalCropIsTheBounds()
    {
        QCOMPARE(cropRect(Mode::normal, {1000, 600}), QRectF(0, 0, 1000, 600));
    }

    void portraitCropIsNineSixteenthsCentred()
    {
        for (Mode mode : {Mode::fill, Mode::rotate, Mode::manual, Mode::smart}) {
            const QRectF crop = cropRect(mode, {1000, 600});
            QCOMPARE(crop, QRectF(331.25, 0, 337.5, 600));
        }
    }

    void cropWiderThanANarrowViewIsNotClamped()
    {
        const QRectF crop = cropRect(Mode::fill, {200, 600});
        QCOMPARE(crop.width(), 337.5);
        QCOMPARE(crop.x(), -68.75);
    }

    void zeroHeightGivesZeroWidthCropInTheMiddle()
    {
        const QRectF crop = cropRect(Mode::manual, {800, 0});
        QCOMPARE(crop, QRectF(400, 0, 0, 0));
    }

    void widerVideoPansAcrossTheCrop()
    {
        const QSizeF crop(337.5, 600);
        const QSizeF video(1920, 1080);
        const double width = 1920.0 / 1080.0 * 600;
        const double overflow = width - 337.5;
        QVERIFY(
            same(videoRect(Mode::manual, crop, video, 0), QRectF(-overflow * 0.5, 0, width, 600)));
        // +1 lines up the video's left edge with the crop's, -1 its right edge.
        QVERIFY(same(videoRect(Mode::manual, crop, video, 1), QRectF(0, 0, width, 600)));
        const QRectF right = videoRect(Mode::smart, crop, video, -1);
        QVERIFY(same(right, QRectF(-overflow, 0, width, 600)));
        QVERIFY(qFuzzyCompare(right.right(), 337.5));
        QVERIFY(same(videoRect(Mode::smart, crop, video, 0.5),
                     QRectF(0.5 * overflow * 0.5 - overflow * 0.5, 0, width, 600)));
    }

    void portraitVideoFitsTheWidthAndIgnoresThePan()
    {
        const QSizeF crop(337.5, 600);
        // a = 0.45 < c = 0.5625: fitted to the width, centred vertically.
        const QRectF fitted = videoRect(Mode::manual, crop, {720, 1600}, 0);
        QVERIFY(same(fitted, QRectF(0, -75, 337.5, 750)));
        QCOMPARE(videoRect(Mode::manual, crop, {720, 1600}, 1), fitted);
        QCOMPARE(videoRect(Mode::manual, crop, {720, 1600}, -1), fitted);
    }

    void equalAspectTakesThePortraitBranch()
    {
        const QRectF rect = videoRect(Mode::manual, {337.5, 600}, {1080, 1920}, 1);
        QVERIFY(same(rect, QRectF(0, 0, 337.5, 600)));
    }

    void extremelyTallVideoIsLimitedByTheDivisor()
    {
        const QRectF rect = videoRect(Mode::manual, {337.5, 600}, {1, 1000}, 0);
        QVERIFY(same(rect, QRectF(0, (337.5 / 0.01 - 600) * -0.5, 337.5, 337.5 / 0.01)));
    }

    void cropHeightUpToOneUsesOneAsDivisor()
    {
        // Crop 0.5625 x 1: c = 0.5625 / 1; a 16:9 video is wider, so it spans a * h.
        const QRectF rect = videoRect(Mode::manual, {0.5625, 1}, {1600, 900}, 0);
        QVERIFY(same(QRectF(QPointF(), rect.size()), QRectF(0, 0, 16.0 / 9.0, 1)));
        // Crop 0.28125 x 0.5: c would be 0.5625 but the divisor 0.5 is replaced by 1, so
        // c = 0.28125 and a video of aspect 0.5 counts as wider.
        const QRectF small = videoRect(Mode::manual, {0.28125, 0.5}, {500, 1000}, 0);
        QVERIFY(same(QRectF(QPointF(), small.size()), QRectF(0, 0, 0.25, 0.5)));
        QVERIFY(qFuzzyCompare(small.x() + 1, 1.0)); // no overflow: max(0.25 - 0.28125, 0)
    }

    void unknownVideoSizeFillsTheCrop()
    {
        for (const QSizeF &size : {QSizeF(0, 0), QSizeF(), QSizeF(1920, 0), QSizeF(-5, 10)}) {
            QCOMPARE(videoRect(Mode::manual, {337.5, 600}, size, 1), QRectF(0, 0, 337.5, 600));
            QCOMPARE(videoRect(Mode::smart, {337.5, 600}, size, -1), QRectF(0, 0, 337.5, 600));
        }
    }

    void unpannedModesUseTheCropSize()
    {
        for (Mode mode : {Mode::normal, Mode::fill, Mode::rotate})
            QCOMPARE(videoRect(mode, {337.5, 600}, {1920, 1080}, 1), QRectF(0, 0, 337.5, 600));
    }

    void zoomEnlargesAboutTheCentre()
    {
        QCOMPARE(k, 0.1299999999999999);
        const QRectF rect = zoomed(QRectF(10, 20, 100, 200));
        QCOMPARE(rect.x(), 10 - 100 * k * 0.5);
        QCOMPARE(rect.y(), 20 - 200 * k * 0.5);
        QCOMPARE(rect.width(), 100 * k + 100);
        QCOMPARE(rect.height(), 200 * k + 200);
        QCOMPARE(rect.center(), QPointF(60, 120));
    }

    void layoutPerMode()
    {
        const QSizeF view(1000, 600);
        const QSizeF video(1920, 1080);

        const PlayerLayerFrame normal = layout(Mode::normal, view, video, 1);
        QCOMPARE(normal.crop, QRectF(0, 0, 1000, 600));
        QVERIFY(!normal.masksToBounds);
        QCOMPARE(normal.frame(), QRectF(0, 0, 1000, 600));
        QCOMPARE(normal.rotation, 0.0);

        const PlayerLayerFrame fill = layout(Mode::fill, view, video, 1);
        QVERIFY(fill.masksToBounds);
        QVERIFY(same(fill.frame(), zoomed(QRectF(0, 0, 337.5, 600))));

        const PlayerLayerFrame rotate = layout(Mode::rotate, view, video, 1);
        QVERIFY(rotate.masksToBounds);
        QCOMPARE(rotate.bounds, QSizeF(600, 337.5));
        QCOMPARE(rotate.position, QPointF(168.75, 300));
        QCOMPARE(rotate.rotation, -1.5707963267948966);

        const PlayerLayerFrame manual = layout(Mode::manual, view, video, 1);
        QVERIFY(same(manual.frame(), zoomed(videoRect(Mode::manual, {337.5, 600}, video, 1))));
        QCOMPARE(manual.rotation, 0.0);
    }

    void unknownSizeInManualFillsTheCropZoomed()
    {
        const PlayerLayerFrame frame = layout(Mode::manual, {1000, 600}, {}, 1);
        QVERIFY(same(frame.frame(), zoomed(QRectF(0, 0, 337.5, 600))));
        QCOMPARE(layout(Mode::manual, {1000, 600}, {}, -1), frame);
    }

    void dragOfThirtyFivePercentMovesOneUnit()
    {
        QCOMPARE(draggedPan(0, 350, 1000), 1.0);
        QCOMPARE(draggedPan(0, -175, 1000), -0.5);
        QCOMPARE(draggedPan(0.25, 35, 1000), 0.35);
    }

    void dragFarBeyondTheEdgeStopsAtExactlyOne()
    {
        QCOMPARE(draggedPan(0, 100000, 1000), 1.0);
        QCOMPARE(draggedPan(0.5, -100000, 1000), -1.0);
    }

    void dragInAnEmptyViewUsesOnePointPerUnit()
    {
        QCOMPARE(draggedPan(0, 0.5, 0), 0.5);
        QCOMPARE(draggedPan(0, -3, 2), -1.0);
    }
};

QTEST_APPLESS_MAIN(TestDisplayGeometry)
#include "tst_displaygeometry.moc"
