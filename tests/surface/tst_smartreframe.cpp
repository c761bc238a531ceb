#include "surface/smartreframe.h"

#include <QTest>

using namespace SmartReframe;

namespace {
QRectF faceAt(double midX, double size = 0.2)
{
    return {midX - size / 2, 0.3, size, size};
}
} // namespace

class TestSmartReframe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stepsCoverThirtyFivePercent()
    {
        double pan = 0;
        const QList<double> expected {0.35, 0.5775, 0.725375};
        for (double value : expected) {
            pan = smoothedPan(pan, 1);
            QCOMPARE(pan, value);
        }
    }

    void targetFollowsTheFaceMidpoint()
    {
        QCOMPARE(targetPan(faceAt(0.5)), 0.0);
        QCOMPARE(targetPan(QRectF(0, 0.2, 0, 0.2)), 1.0);
        QCOMPARE(targetPan(QRectF(1, 0.2, 0, 0.2)), -1.0);
        QCOMPARE(targetPan(faceAt(0.75)), -0.5);
        QCOMPARE(targetPan(std::nullopt), 0.0);
    }

    void targetIsLimitedToOne()
    {
        QCOMPARE(targetPan(QRectF(-0.5, 0, 0.2, 0.2)), 1.0);
        QCOMPARE(targetPan(QRectF(1.2, 0, 0.4, 0.2)), -1.0);
    }

    void largestFaceIsFollowed()
    {
        const QList<QRectF> faces {faceAt(0.2, 0.1), faceAt(0.8, 0.3), faceAt(0.5, 0.2)};
        QCOMPARE(sortedByArea(faces).first(), faces[1]);
        QCOMPARE(nextPan(0, faces), smoothedPan(0, targetPan(faces[1])));
    }

    void equalAreasKeepTheDetectorOrder()
    {
        const QRectF left(0.1, 0.1, 0.2, 0.3);
        const QRectF right(0.7, 0.5, 0.3, 0.2);
        QCOMPARE(sortedByArea({left, right}).first(), left);
        QCOMPARE(sortedByArea({right, left}).first(), right);
        QVERIFY(nextPan(0, {left, right}) > 0);
        QVERIFY(nextPan(0, {right, left}) < 0);
    }

    void losingTheFaceDriftsBackAtTheSameRate()
    {
        double pan = 1;
        pan = nextPan(pan, {});
        QCOMPARE(pan, 0.65);
        pan = nextPan(pan, {});
        QCOMPARE(pan, 0.4225);
    }

    void everyFaceCountsWithoutADeadZone()
    {
        const double pan = nextPan(0, {faceAt(0.5001, 0.01)});
        QVERIFY(pan < 0);
        QVERIFY(pan > -0.001);
    }
};

QTEST_APPLESS_MAIN(TestSmartReframe)
#include "tst_smartreframe.moc"
