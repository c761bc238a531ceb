// The capture thread's worker, driven directly: pictures drawn close together each keep their
// own moment in the file, and a still scene is filled with the last picture at the frame rate.
#include "mediaprobe.h"
#include "recording/captureclock.h"
#include "recording/captureworker.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

class TestCaptureWorker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesDrawnInOneBurstAreAllKept()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("burst.mp4");
        CaptureWorker worker;
        const QString error = worker.open(path, {320, 240}, "ultrafast");
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QImage picture(320, 240, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        // After a stall the player draws three pictures before the next tick.
        const double start = CaptureClock::now();
        for (int i = 0; i < 3; ++i)
            worker.offerPicture({picture, false, std::nullopt}, picture.rect(), start + i / 30.0);
        QTest::qWait(300);
        const PlayerCaptureWriter::Outcome outcome = worker.close();
        QVERIFY2(outcome.error.isEmpty(), qPrintable(outcome.error));
        QCOMPARE(worker.statistics().picturesWritten, 3);
        // The still moments after them repeat the last one.
        QVERIFY(worker.statistics().framesWritten > 3);
        QCOMPARE(MediaProbe::videoPacketCount(path), int(worker.statistics().framesWritten));
    }
};

QTEST_MAIN(TestCaptureWorker)
#include "tst_captureworker.moc"
