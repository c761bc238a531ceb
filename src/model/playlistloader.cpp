#include "playlistloader.h"

#include <QNetworkAccessManager>
#include <memory>

// Runs on the loader's thread only.
class PlaylistLoader::Worker final : public QObject
{
public:
    void download(const QUrl &url, const PlaylistDownloadLimits &limits, QObject *context,
                  const Done &done)
    {
        m_download = std::make_unique<PlaylistDownload>(
            m_network, url, limits, [this, url, context, done](PlaylistDownload::Result r) {
                m_download.release()->deleteLater();
                if (!r.error.isNull())
                    return deliver(context, done, {{}, r.error});
                deliver(context, done, loadPlaylist(r.bytes, url));
            });
    }

    void cancel() { m_download.reset(); }

    static void deliver(QObject *context, const Done &done, PlaylistLoadResult result)
    {
        // The context outlives the loader's thread (its owner joins it), so it is alive here.
        QMetaObject::invokeMethod(
            context, [done, result = std::move(result)] { done(result); }, Qt::QueuedConnection);
    }

private:
    QNetworkAccessManager m_network {this};
    std::unique_ptr<PlaylistDownload> m_download;
};

PlaylistLoader::PlaylistLoader()
{
    m_thread.setObjectName(QStringLiteral("PlaylistLoader"));
    m_worker = new Worker;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
}

PlaylistLoader::~PlaylistLoader()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->cancel(); });
    m_thread.quit();
    m_thread.wait();
    // The worker was deleted with the thread's last events.
}

void PlaylistLoader::load(const QUrl &url, const PlaylistDownloadLimits &limits, QObject *context,
                          Done done)
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, url, limits, context, done] {
        worker->download(url, limits, context, done);
    });
}

void PlaylistLoader::loadFile(const QString &path, qint64 maxBytes, QObject *context, Done done)
{
    QMetaObject::invokeMethod(m_worker, [path, maxBytes, context, done] {
        Worker::deliver(context, done, loadPlaylistFile(path, maxBytes));
    });
}

void PlaylistLoader::cancel()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->cancel(); });
}

void PlaylistLoader::release(QList<PlaylistEntry> entries)
{
    QMetaObject::invokeMethod(m_worker, [entries = std::move(entries)]() mutable { entries = {}; });
}
