#include "playercapturestream.h"

#include "captureworker.h"

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

void PlayerCaptureStream::start(PlayerRecordingSurface *surface, const Configuration &configuration)
{
    m_surface = surface;
    m_view = surface ? surface->recordingView() : nullptr;
    // The stream outlives every call it posts: its destructor waits for the capture thread.
    QMetaObject::invokeMethod(m_worker, [this, worker = m_worker, configuration] {
        const QString error = worker->open(configuration.path, configuration.outputSize,
                                           configuration.crop, configuration.preset);
        QMetaObject::invokeMethod(
            this,
            [this, worker, error] {
                if (!error.isEmpty()) {
                    m_journalEntry.reset();
                    Q_EMIT startFailed(error);
                    return;
                }
                m_open = true;
                if (m_view && m_surface) {
                    m_surface->setPictureReceiver([worker](const CapturedPicture &picture) {
                        worker->offerPicture(picture);
                    });
                }
                Q_EMIT started();
            },
            Qt::QueuedConnection);
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
