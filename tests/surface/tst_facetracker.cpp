#include "testfaces.h"
#include "testmedia.h"

#include "model/mpvplayer.h"
#include "surface/mpvframegrabber.h"

#include "surface/facedetector.h"
#include "surface/facedetectors.h"
#include "surface/facetracker.h"
#include "surface/smartreframe.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QUrl>
#include <atomic>
#include <thread>

namespace {

// Finds one face once let through; records the threads it was made and run on.
struct Gate
{
    QSemaphore open;
    std::atomic<int> made {0};
    std::atomic<int> calls {0};
    std::atomic<QThread *> madeOn {nullptr};
    std::atomic<QThread *> ranOn {nullptr};
    std::atomic<int> lastFormat {0};
};

class GatedFace final : public FaceDetector
{
public:
    explicit GatedFace(Gate *gate)
        : m_gate(gate)
    { }
    QList<QRectF> detect(const QImage &frame) override
    {
        m_gate->ranOn = QThread::currentThread();
        m_gate->lastFormat = int(frame.format());
        ++m_gate->calls;
        m_gate->open.acquire();
        return {QRectF(0.25, 0.25, 0.5, 0.5)};
    }
    QString name() const override { return QStringLiteral("gated"); }

private:
    Gate *m_gate;
};

FaceTracker::DetectorFactory gatedFactory(Gate *gate)
{
    return [gate] {
        ++gate->made;
        gate->madeOn = QThread::currentThread();
        return std::make_unique<GatedFace>(gate);
    };
}

QImage grey()
{
    QImage image(64, 36, QImage::Format_RGBX8888);
    image.fill(QColor(128, 128, 128));
    return image;
}

} // namespace

class TestFaceTracker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onePictureAtATimeAndTheResultComesBackHere()
    {
        Gate gate;
        FaceTracker tracker(gatedFactory(&gate));
        QSignalSpy found(&tracker, &FaceTracker::facesFound);
        QVERIFY(!tracker.isBusy());
        QVERIFY(tracker.submit(grey(), 7));
        QVERIFY(tracker.isBusy());
        // A picture due while one is searched is skipped.
        QVERIFY(!tracker.submit(grey(), 8));
        QTRY_COMPARE(gate.calls.load(), 1);
        gate.open.release();
        QTRY_COMPARE(found.count(), 1);
        QVERIFY(!tracker.isBusy());
        QCOMPARE(found.first().at(1).toULongLong(), 7u);
        QCOMPARE(found.first().at(0).value<QList<QRectF>>(),
                 QList<QRectF>({QRectF(0.25, 0.25, 0.5, 0.5)}));
        // Made once, and run, on the worker thread; the picture reached it as B, G, R, x.
        QVERIFY(gate.madeOn != QThread::currentThread());
        QCOMPARE(gate.ranOn.load(), gate.madeOn.load());
        QCOMPARE(gate.lastFormat.load(), int(QImage::Format_RGB32));

        QVERIFY(tracker.submit(grey(), 9));
        gate.open.release();
        QTRY_COMPARE(found.count(), 2);
        QCOMPARE(found.last().at(1).toULongLong(), 9u);
        QCOMPARE(gate.made.load(), 1);
    }

    void aPictureThatCannotBeTakenGivesNoResult()
    {
        Gate gate;
        FaceTracker tracker(gatedFactory(&gate));
        QSignalSpy found(&tracker, &FaceTracker::facesFound);
        QVERIFY(tracker.submit([] { return QImage(); }, 1));
        QTRY_VERIFY(!tracker.isBusy());
        QCOMPARE(found.count(), 0);
        QCOMPARE(gate.calls.load(), 0);
        QVERIFY(!tracker.submit(FaceTracker::PictureSource(), 2));
        QVERIFY(!tracker.isBusy());
    }

    void withoutADetectorNoFaceIsFound()
    {
        FaceTracker tracker([] { return std::unique_ptr<FaceDetector>(); });
        QSignalSpy found(&tracker, &FaceTracker::facesFound);
        QVERIFY(tracker.submit(grey(), 3));
        QTRY_COMPARE(found.count(), 1);
        QVERIFY(found.first().at(0).value<QList<QRectF>>().isEmpty());
    }

    void goingAwayMidSearchWaitsForItAndSendsNothing()
    {
        Gate gate;
        auto tracker = std::make_unique<FaceTracker>(gatedFactory(&gate));
        QSignalSpy found(tracker.get(), &FaceTracker::facesFound);
        QVERIFY(tracker->submit(grey(), 1));
        QTRY_COMPARE(gate.calls.load(), 1);
        // Let the search end a little after the tracker starts going.
        std::thread releaser([&gate] {
            QThread::msleep(200);
            gate.open.release();
        });
        tracker.reset();
        releaser.join();
        QTest::qWait(50);
        QCOMPARE(found.count(), 0);
    }

    void framesAreTakenFromMpvOnTheDetectionThread()
    {
        QTemporaryDir media;
        const QString video = media.filePath(QStringLiteral("face.mp4"));
        QVERIFY(TestMedia::makeMovingPicture(video, TestFaces::directory() + "/astronaut.png",
                                             {1280, 720}, 30, 1));
        auto player = std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none);
        player->replaceCurrentItem(QUrl::fromLocalFile(video));
        player->play();
        QTRY_VERIFY_WITH_TIMEOUT(player->presentationSize().isValid(), 10000);
        auto grabber = std::make_shared<MpvFrameGrabber>(player->handle());
        QThread *grabbedOn = nullptr;
        QImage grabbed;
        {
            FaceTracker tracker(&FaceDetectors::makeDefault);
            QSignalSpy found(&tracker, &FaceTracker::facesFound);
            // The first tries may come before mpv has a frame to give.
            QElapsedTimer clock;
            clock.start();
            // Generous bounds: the sanitizer builds run the detector many times slower.
            while (found.isEmpty() && clock.elapsed() < 60000) {
                QVERIFY(tracker.submit(
                    [&, grabber] {
                        grabbedOn = QThread::currentThread();
                        grabbed = grabber->grab();
                        return grabbed;
                    },
                    1));
                QVERIFY(QTest::qWaitFor([&] { return !tracker.isBusy(); }, 60000));
            }
            QCOMPARE(found.count(), 1);
            // The sample's size, as the frame's shape, and the astronaut where she stands: at
            // the left of the picture as the video starts.
            QCOMPARE(grabbed.size(), QSize(960, 540));
            QCOMPARE(grabbed.format(), QImage::Format_RGB32);
            QVERIFY(grabbedOn != QThread::currentThread());
            const QList<QRectF> faces = found.first().at(0).value<QList<QRectF>>();
            QCOMPARE(faces.size(), 1);
            QVERIFY2(faces.first().center().x() < 0.4,
                     qPrintable(QString::number(faces.first().x())));
        }
        // Stopped, a grab gives nothing and waits for nothing; the grabber goes before mpv.
        grabber->stop();
        QVERIFY(grabber->grab().isNull());
        grabber.reset();
        player.reset();
    }

    void theDefaultDetectorFindsTheAstronautThroughTheTracker()
    {
        const TestFaces::Photo photo = TestFaces::photos().first();
        const QImage image = TestFaces::load(photo);
        QVERIFY(!image.isNull());
        FaceTracker tracker(&FaceDetectors::makeDefault);
        QSignalSpy found(&tracker, &FaceTracker::facesFound);
        QVERIFY(tracker.submit(image.convertToFormat(QImage::Format_RGBX8888), 5));
        QTRY_COMPARE_WITH_TIMEOUT(found.count(), 1, 60000);
        QVERIFY(TestFaces::hits(found.first().at(0).value<QList<QRectF>>(), photo.faces.first()));
    }
};

QTEST_GUILESS_MAIN(TestFaceTracker)
#include "tst_facetracker.moc"
