#include "surface/blazefacedecoder.h"

#include <QTest>
#include <vector>

using namespace BlazeFaceDecoder;

namespace {
constexpr float silent = -20; // a logit far below any threshold

struct RawOutputs
{
    std::vector<float> scores = std::vector<float>(anchorCount, silent);
    std::vector<float> boxes = std::vector<float>(size_t(anchorCount) * valuesPerAnchor, 0);

    void set(int anchor, float logit, float x, float y, float w, float h)
    {
        scores[size_t(anchor)] = logit;
        float *box = boxes.data() + size_t(anchor) * valuesPerAnchor;
        box[0] = x;
        box[1] = y;
        box[2] = w;
        box[3] = h;
    }
};
} // namespace

class TestBlazeFaceDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anchorsCoverBothFeatureMaps()
    {
        QCOMPARE(anchorCount, 896);
        QCOMPARE(anchorCentre(0), QPointF(1.0 / 32, 1.0 / 32));
        QCOMPARE(anchorCentre(1), QPointF(1.0 / 32, 1.0 / 32));
        QCOMPARE(anchorCentre(2), QPointF(3.0 / 32, 1.0 / 32));
        QCOMPARE(anchorCentre(32), QPointF(1.0 / 32, 3.0 / 32));
        QCOMPARE(anchorCentre(511), QPointF(31.0 / 32, 31.0 / 32));
        QCOMPARE(anchorCentre(512), QPointF(1.0 / 16, 1.0 / 16));
        QCOMPARE(anchorCentre(517), QPointF(1.0 / 16, 1.0 / 16));
        QCOMPARE(anchorCentre(518), QPointF(3.0 / 16, 1.0 / 16));
        QCOMPARE(anchorCentre(895), QPointF(15.0 / 16, 15.0 / 16));
    }

    void boxesAreOffsetsFromTheirAnchorInInputPixels()
    {
        RawOutputs raw;
        raw.set(37, 3, 4, -2, 32, 40);
        const QList<Detection> found = decode(raw.scores, raw.boxes, 128);
        QCOMPARE(found.size(), 1);
        const QPointF anchor = anchorCentre(37);
        QCOMPARE(found[0].box.center(), anchor + QPointF(4.0 / 128, -2.0 / 128));
        QCOMPARE(found[0].box.size(), QSizeF(0.25, 0.3125));
        QCOMPARE(found[0].score, 1.0f / (1.0f + std::exp(-3.0f)));
    }

    void scoresBelowTheThresholdAreDropped()
    {
        RawOutputs raw;
        raw.set(10, -0.01f, 0, 0, 10, 10); // just under 0.5
        raw.set(600, 0, 0, 0, 10, 10); // exactly 0.5
        const QList<Detection> found = decode(raw.scores, raw.boxes, 256);
        QCOMPARE(found.size(), 1);
        QCOMPARE(found[0].box.center(), anchorCentre(600));
    }

    void detectionsComeBestFirst()
    {
        RawOutputs raw;
        raw.set(3, 1, 0, 0, 8, 8);
        raw.set(700, 4, 0, 0, 8, 8);
        raw.set(100, 2, 0, 0, 8, 8);
        const QList<Detection> found = decode(raw.scores, raw.boxes, 128);
        QCOMPARE(found.size(), 3);
        QCOMPARE(found[0].box.center(), anchorCentre(700));
        QCOMPARE(found[1].box.center(), anchorCentre(100));
        QCOMPARE(found[2].box.center(), anchorCentre(3));
    }

    void emptyBoxesAndShortOutputsGiveNothing()
    {
        RawOutputs raw;
        raw.set(5, 5, 0, 0, 0, 10);
        QVERIFY(decode(raw.scores, raw.boxes, 128).isEmpty());
        raw.set(6, 5, 0, 0, 10, 10);
        QVERIFY(decode(std::span(raw.scores).first(100), raw.boxes, 128).isEmpty());
        QVERIFY(decode(raw.scores, std::span(raw.boxes).first(16), 128).isEmpty());
        QVERIFY(decode(raw.scores, raw.boxes, 0).isEmpty());
    }

    void overlappingDetectionsBlendByScore()
    {
        const QList<Detection> detections {
            {QRectF(0.1, 0.1, 0.2, 0.2), 0.9f},
            {QRectF(0.12, 0.1, 0.2, 0.2), 0.6f},
            {QRectF(0.6, 0.6, 0.2, 0.2), 0.8f},
        };
        QVERIFY(intersectionOverUnion(detections[0].box, detections[1].box) > overlapThreshold);
        const QList<Detection> kept = suppress(detections);
        QCOMPARE(kept.size(), 2);
        QCOMPARE(kept[0].score, 0.9f);
        const double high = 0.9f, low = 0.6f; // the scores as the detections hold them
        const double left = (0.1 * high + 0.12 * low) / (high + low);
        QVERIFY(qFuzzyCompare(kept[0].box.left(), left));
        QVERIFY(qFuzzyCompare(kept[0].box.width(), 0.2));
        QCOMPARE(kept[1].box, QRectF(0.6, 0.6, 0.2, 0.2));
        QCOMPARE(kept[1].score, 0.8f);
    }

    void slightOverlapKeepsBoth()
    {
        const QList<Detection> detections {
            {QRectF(0, 0, 0.2, 0.2), 0.9f},
            {QRectF(0.15, 0, 0.2, 0.2), 0.7f},
        };
        QVERIFY(intersectionOverUnion(detections[0].box, detections[1].box) < overlapThreshold);
        QCOMPARE(suppress(detections).size(), 2);
        QVERIFY(suppress({}).isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestBlazeFaceDecoder)
#include "tst_blazefacedecoder.moc"
