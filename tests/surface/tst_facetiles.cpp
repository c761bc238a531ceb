#include "surface/facetiles.h"
#include "surface/ultrafacedetector.h"

#include <QTest>

using FaceTiles::ScoredFace;

class TestFaceTiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tilesCoverTheFrameWithTheirOverlap()
    {
        const QList<QRect> tiles = FaceTiles::layout({960, 540}, {426, 320}, 64);
        // Three across (two would share no pixel), two down.
        QCOMPARE(tiles.size(), 6);
        QCOMPARE(tiles.first(), QRect(0, 0, 426, 320));
        QCOMPARE(tiles.last(), QRect(534, 220, 426, 320));
        QRegion covered;
        for (const QRect &tile : tiles) {
            QCOMPARE(tile.size(), QSize(426, 320));
            QVERIFY(QRect(0, 0, 960, 540).contains(tile));
            covered += tile;
        }
        QCOMPARE(covered, QRegion(0, 0, 960, 540));
        // Neighbours share at least the overlap.
        QVERIFY(tiles[0].right() - tiles[1].left() + 1 >= 64);
        QVERIFY(tiles[0].bottom() - tiles[3].top() + 1 >= 64);
    }

    void aFrameNoLargerThanATileIsOneTile()
    {
        QCOMPARE(FaceTiles::layout({320, 240}, {426, 320}, 64),
                 QList<QRect>({QRect(0, 0, 320, 240)}));
        QCOMPARE(FaceTiles::layout({426, 320}, {426, 320}, 64),
                 QList<QRect>({QRect(0, 0, 426, 320)}));
        // Narrow and tall: one column, tiles down its length.
        const QList<QRect> tall = FaceTiles::layout({300, 1000}, {426, 320}, 64);
        QCOMPARE(tall.size(), 4);
        QCOMPARE(tall.first().width(), 300);
        QVERIFY(FaceTiles::layout({}, {426, 320}, 64).isEmpty());
        QVERIFY(FaceTiles::layout({960, 540}, {}, 64).isEmpty());
    }

    void anOverlapLargerThanATileStillEnds()
    {
        const QList<QRect> tiles = FaceTiles::layout({1000, 100}, {100, 100}, 500);
        // Half a tile at most: 900 pixels to go in steps of 50.
        QCOMPARE(tiles.size(), 19);
        QCOMPARE(tiles.last(), QRect(900, 0, 100, 100));
    }

    void aFaceOnASeamCountsOnlyWhereItIsWhole()
    {
        const QSize frame(960, 540);
        const QList<QRect> tiles = FaceTiles::layout(frame, {426, 320}, 64);
        // A face 40 pixels wide across the right edge of the first tile (x = 426).
        const QRectF face(400, 100, 40, 48);
        const QRectF cut = face.intersected(QRectF(tiles[0]));
        QVERIFY(FaceTiles::touchesInnerEdge(cut, tiles[0], frame));
        QVERIFY(!FaceTiles::touchesInnerEdge(face, tiles[1], frame));
        // The frame's own edges are no seams.
        QVERIFY(!FaceTiles::touchesInnerEdge(QRectF(0, 0, 30, 30), tiles[0], frame));
        QVERIFY(!FaceTiles::touchesInnerEdge(QRectF(930, 510, 30, 30), tiles.last(), frame));
    }

    void oneFaceSeenTwiceIsMergedOnce()
    {
        // The same face from a tile and from the whole frame, boxes a little apart, and the
        // half of it a second tile saw.
        const QList<ScoredFace> found {{QRectF(100, 100, 40, 48), 0.9f},
                                       {QRectF(102, 98, 38, 50), 0.95f},
                                       {QRectF(100, 100, 20, 48), 0.85f}};
        const QList<ScoredFace> merged = FaceTiles::merge(found);
        QCOMPARE(merged.size(), 1);
        QCOMPARE(merged.first().box, QRectF(102, 98, 38, 50));
    }

    void twoFacesSideBySideStayTwo()
    {
        const QList<ScoredFace> found {{QRectF(100, 100, 40, 48), 0.9f},
                                       {QRectF(138, 102, 40, 48), 0.92f},
                                       {QRectF(300, 100, 10, 12), 0.8f}};
        const QList<ScoredFace> merged = FaceTiles::merge(found);
        QCOMPARE(merged.size(), 3);
        // Best score first.
        QCOMPARE(merged[0].box, QRectF(138, 102, 40, 48));
        QCOMPARE(merged[1].box, QRectF(100, 100, 40, 48));
    }

    void overlapIsMeasuredOnTheSmallerBox()
    {
        QCOMPARE(FaceTiles::overlapOfSmaller(QRectF(0, 0, 10, 10), QRectF(2, 2, 4, 4)), 1.0);
        QCOMPARE(FaceTiles::overlapOfSmaller(QRectF(0, 0, 10, 10), QRectF(5, 0, 10, 10)), 0.5);
        QCOMPARE(FaceTiles::overlapOfSmaller(QRectF(0, 0, 10, 10), QRectF(20, 0, 10, 10)), 0.0);
        QCOMPARE(FaceTiles::overlapOfSmaller(QRectF(0, 0, 0, 10), QRectF(0, 0, 10, 10)), 0.0);
    }

    void theDetectorSearchesTheWholeSampleAndItsTiles()
    {
        // Pure layout: no model is needed to know the passes.
        const UltraFaceDetector detector(QStringLiteral("/nonexistent"));
        const QList<QRect> passes = detector.passes({960, 540});
        QCOMPARE(passes.size(), 7);
        QCOMPARE(passes.first(), QRect(0, 0, 960, 540));
        QCOMPARE(
            passes.mid(1),
            FaceTiles::layout({960, 540}, detector.settings().tile, detector.settings().overlap));
        // A sample no larger than a tile is searched once.
        QCOMPARE(detector.passes({320, 180}), QList<QRect>({QRect(0, 0, 320, 180)}));
    }
};

QTEST_GUILESS_MAIN(TestFaceTiles)
#include "tst_facetiles.moc"
