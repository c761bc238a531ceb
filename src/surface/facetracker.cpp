#include "facetracker.h"

#include "facedetector.h"
#include "facedetectors.h"

#include <QImage>

#ifdef Q_OS_LINUX
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

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
#ifdef Q_OS_LINUX
            // Qt's thread priorities mean nothing to Linux's default scheduler; its idle class
            // does: the window and playback come first whenever the cores are busy.
            sched_param idle {};
            if (sched_setscheduler(0, SCHED_IDLE, &idle) != 0)
                setpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)), 19);
#endif
            m_detector = m_factory ? m_factory() : nullptr;
            m_detectorMade = true;
        }
        if (!m_detector)
            return {};
        // Detectors read B, G, R, x; the conversion is this thread's work, not the window's.
        if (picture.format() == QImage::Format_RGB32)
            return m_detector->detect(picture);
        return m_detector->detect(picture.convertToFormat(QImage::Format_RGB32));
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
    m_thread.start();
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
    return submit([picture] { return picture; }, ticket);
}

bool FaceTracker::submit(PictureSource takePicture, quint64 ticket)
{
    if (m_busy || !takePicture)
        return false;
    m_busy = true;
    QMetaObject::invokeMethod(
        m_worker,
        [worker = m_worker, takePicture = std::move(takePicture), ticket, owner = this] {
            const QImage picture = takePicture();
            const bool taken = !picture.isNull();
            const QList<QRectF> faces = taken ? worker->detect(picture) : QList<QRectF>();
            // The owner waits for this thread before it goes, so it is still there; the call is
            // queued to its thread.
            QMetaObject::invokeMethod(
                owner,
                [owner, faces, ticket, taken] {
                    owner->m_busy = false;
                    if (taken)
                        Q_EMIT owner->facesFound(faces, ticket);
                },
                Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    return true;
}
