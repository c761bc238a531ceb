#include "facetracker.h"

#include "facedetector.h"
#include "facedetectors.h"

#include <QImage>

class FaceTracker::Worker final : public QObject
{
public:
    explicit Worker(DetectorFactory factory)
        : m_factory(std::move(factory))
    { }

    QList<QRectF> detect(const QImage &picture)
    {
        if (!m_detectorMade) {
            FaceDetectors::useOneCore();
            m_detector = m_factory ? m_factory() : nullptr;
            m_detectorMade = true;
        }
        return m_detector ? m_detector->detect(picture) : QList<QRectF>();
    }

private:
    DetectorFactory m_factory;
    std::unique_ptr<FaceDetector> m_detector;
    bool m_detectorMade = false;
};

FaceTracker::FaceTracker(DetectorFactory factory, QObject *parent)
    : QObject(parent)
    , m_worker(new Worker(std::move(factory)))
{
    m_thread.setObjectName(QStringLiteral("face detection"));
    m_worker->moveToThread(&m_thread);
    // Below the window and playback: a late result only delays one step of the pan.
    m_thread.start(QThread::LowPriority);
}

FaceTracker::~FaceTracker()
{
    m_thread.quit();
    m_thread.wait();
    // The worker's thread has ended: nothing else can touch it now.
    delete m_worker;
}

bool FaceTracker::submit(const QImage &picture, quint64 ticket)
{
    if (m_busy)
        return false;
    m_busy = true;
    QMetaObject::invokeMethod(
        m_worker,
        [worker = m_worker, picture, ticket, owner = this] {
            const QList<QRectF> faces = worker->detect(picture);
            // The owner waits for this thread before it goes, so it is still there; the call is
            // queued to its thread.
            QMetaObject::invokeMethod(
                owner,
                [owner, faces, ticket] {
                    owner->m_busy = false;
                    Q_EMIT owner->facesFound(faces, ticket);
                },
                Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    return true;
}
