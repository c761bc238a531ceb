#include "playercapturestream.h"

#include "captureclock.h"
#include "capturegeometry.h"
#include "captureworker.h"
#include "surface/playersurfaceregistry.h"

#include <QScreen>
#include <QWidget>

PlayerCaptureStream::PlayerCaptureStream(QObject *parent)
    : QObject(parent)
{
    m_thread.setObjectName(QStringLiteral("capture"));
    m_worker = new CaptureWorker;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_worker, &CaptureWorker::soundFailed, this, [this](const QString &why) {
        if (m_open)
            Q_EMIT stoppedWithError(why);
    });
    connect(m_worker, &CaptureWorker::writeFailed, this, [this] {
        if (m_open)
            Q_EMIT writeFailed();
    });
    // Encoding must not wait for the player's threads.
    m_thread.start(QThread::TimeCriticalPriority);
}

PlayerCaptureStream::~PlayerCaptureStream()
{
    detachSurface();
    // Finish the file rather than lose what was recorded; after a stop this only waits for the
    // finishing already under way, if any.
    QMetaObject::invokeMethod(
        m_worker, [worker = m_worker] { worker->close(); }, Qt::BlockingQueuedConnection);
    m_journalEntry.reset();
    m_thread.quit();
    m_thread.wait();
}

void PlayerCaptureStream::start(const Configuration &configuration)
{
    // The stream outlives every call it posts: its destructor waits for the capture thread.
    QMetaObject::invokeMethod(m_worker, [this, worker = m_worker, configuration] {
        const QString error
            = worker->open(configuration.path, configuration.outputSize, configuration.preset);
        QMetaObject::invokeMethod(
            this,
            [this, error] {
                if (!error.isEmpty()) {
                    m_journalEntry.reset();
                    Q_EMIT startFailed(error);
                    return;
                }
                m_open = true;
                attachSurface(PlayerSurfaceRegistry::shared().surface());
                connect(&PlayerSurfaceRegistry::shared(), &PlayerSurfaceRegistry::surfaceChanged,
                        this, [this] {
                            if (m_open)
                                attachSurface(PlayerSurfaceRegistry::shared().surface());
                        });
                Q_EMIT started();
            },
            Qt::QueuedConnection);
    });
}

void PlayerCaptureStream::attachSurface(PlayerRecordingSurface *surface)
{
    detachSurface();
    if (!surface) {
        m_worker->offerNothing();
        return;
    }
    m_surface = surface;
    m_view = surface->recordingView();
    // Where the recorded part is, worked out for every picture: the view may have been
    // resized, moved or turned to another mode since the last one.
    surface->setPictureReceiver(
        [worker = m_worker, surface, view = m_view.data()](const CapturedPicture &picture) {
            const double drawn
                = picture.drawnAt ? CaptureClock::seconds(*picture.drawnAt) : CaptureClock::now();
            const QScreen *screen = view->screen();
            const QRectF frame(QPointF(view->mapToGlobal(QPoint(0, 0))), QSizeF(view->size()));
            worker->offerPicture(
                picture,
                CaptureGeometry::pictureCrop(surface->recordingRectInView(), frame,
                                             screen ? QRectF(screen->geometry()) : frame,
                                             view->devicePixelRatioF()),
                drawn);
        });
}

void PlayerCaptureStream::stop()
{
    detachSurface();
    if (!m_open)
        return;
    m_open = false;
    QMetaObject::invokeMethod(m_worker, [this, worker = m_worker] {
        const PlayerCaptureWriter::Outcome outcome = worker->close();
        QMetaObject::invokeMethod(
            this,
            [this, outcome] {
                m_journalEntry.reset();
                Q_EMIT finished(outcome.path, outcome.error);
            },
            Qt::QueuedConnection);
    });
}

void PlayerCaptureStream::keepJournalEntry(std::unique_ptr<RecordingJournal::Entry> entry)
{
    m_journalEntry = std::move(entry);
}

PlayerCaptureWriter::Statistics PlayerCaptureStream::statistics() const
{
    return m_worker->statistics();
}

void PlayerCaptureStream::detachSurface()
{
    if (m_view && m_surface)
        m_surface->setPictureReceiver({});
    m_surface = nullptr;
    m_view = nullptr;
}
