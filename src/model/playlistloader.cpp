#include "playlistloader.h"

#include <optional>

#include <QNetworkAccessManager>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#if defined(Q_OS_LINUX)
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {
// Trivially destructible, so that work left behind may count itself out after static
// destructors ran.
std::atomic<int> unfinishedWorks {0};
} // namespace

// Where results of work nobody joins are posted, while the loader is alive.
struct PlaylistLoader::Mailbox
{
    std::mutex mutex;
    std::condition_variable finished;
    std::stop_source stop; // requested when the loader goes
    bool open = true;
    int running = 0; // works under way

    void deliver(QObject *context, const Done &done, PlaylistLoadResult result)
    {
        // Held while posting: the loader, which closes the box, goes before its context.
        const std::lock_guard lock(mutex);
        if (!open)
            return;
        QMetaObject::invokeMethod(
            context, [done, result = std::move(result)] { done(result); }, Qt::QueuedConnection);
    }

    void close()
    {
        {
            const std::lock_guard lock(mutex);
            open = false;
        }
        stop.request_stop();
    }

    void started()
    {
        const std::lock_guard lock(mutex);
        ++running;
        ++unfinishedWorks;
    }

    void ended()
    {
        const std::lock_guard lock(mutex);
        --running;
        --unfinishedWorks;
        finished.notify_all();
    }

    // Gives work told to stop (a parse) the time to, so that it is not cut off by the process
    // ending; a read that blocks for good is left behind.
    void waitForRunning(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(mutex);
        finished.wait_for(lock, patience, [this] { return running == 0; });
    }
};

namespace {

// On two cores the download and the parse compete with the interface thread for the CPU; at a
// lower priority they take what typing and drawing leave. Linux keeps a nice value per thread,
// and threads started from this one (the parser's helper) inherit it.
void lowerThisThreadsPriority()
{
#if defined(Q_OS_LINUX)
    const auto thread = static_cast<id_t>(gettid());
    errno = 0;
    const int inherited = getpriority(PRIO_PROCESS, thread);
    if (errno == 0)
        setpriority(PRIO_PROCESS, thread, PlaylistLoader::backgroundNice(inherited));
#endif
}

} // namespace

// Runs work on a thread of its own that nobody joins, and posts its result.
template<typename Work>
void PlaylistLoader::runDetached(std::shared_ptr<Mailbox> mailbox, Work work, QObject *context,
                                 Done done)
{
    mailbox->started();
    std::thread([mailbox = std::move(mailbox), work = std::move(work), context,
                 done = std::move(done)]() mutable {
        lowerThisThreadsPriority();
        {
            const Done ownDone = std::move(done);
            std::optional<Work> ownWork(std::move(work));
            PlaylistLoadResult result = (*ownWork)(mailbox->stop.get_token());
            // What the work holds (a downloaded list's bytes) goes back to the system before
            // the result is published: unmapping tens of megabytes would otherwise hold up the
            // main thread's first drawing of the list.
            ownWork.reset();
            mailbox->deliver(context, ownDone, std::move(result));
        }
        mailbox->ended();
    }).detach();
}

// Runs on the loader's thread only.
class PlaylistLoader::Worker final : public QObject
{
public:
    void download(const QUrl &url, const PlaylistDownloadLimits &limits,
                  PlaylistDownload::Completion completion)
    {
        m_download = std::make_unique<PlaylistDownload>(
            m_network, url, limits,
            [this, completion = std::move(completion)](PlaylistDownload::Result result) {
                m_download.release()->deleteLater();
                completion(std::move(result));
            });
    }

    void cancel() { m_download.reset(); }

private:
    QNetworkAccessManager m_network {this};
    std::unique_ptr<PlaylistDownload> m_download;
};

PlaylistLoader::PlaylistLoader(FileReader readFile)
    : m_readFile(std::move(readFile))
    , m_mailbox(std::make_shared<Mailbox>())
{
    m_thread.setObjectName(QStringLiteral("PlaylistLoader"));
    m_worker = new Worker;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(m_worker, [] { lowerThisThreadsPriority(); });
}

PlaylistLoader::~PlaylistLoader()
{
    m_mailbox->close();
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->cancel(); });
    // The download thread only waits for the network, never blocks on it: this is quick.
    m_thread.quit();
    m_thread.wait();
    // The worker was deleted with the thread's last events.
    m_mailbox->waitForRunning(std::chrono::seconds(1));
}

void PlaylistLoader::load(const QUrl &url, const PlaylistDownloadLimits &limits, QObject *context,
                          Done done)
{
    QMetaObject::invokeMethod(
        m_worker,
        [worker = m_worker, mailbox = m_mailbox, url, limits, context, done = std::move(done)] {
            worker->download(
                url, limits, [mailbox, url, context, done](PlaylistDownload::Result r) {
                    if (!r.error.isNull())
                        return mailbox->deliver(context, done,
                                                PlaylistLoadResult::failure(r.error));
                    // Parsed apart, so that a large list never keeps the next download waiting.
                    runDetached(
                        mailbox,
                        [bytes = std::move(r.bytes), url](const std::stop_token &stop) {
                            return loadPlaylist(bytes, url, stop);
                        },
                        context, done);
                });
        });
}

void PlaylistLoader::loadFile(const QString &path, qint64 maxBytes, QObject *context, Done done)
{
    runDetached(
        m_mailbox,
        [readFile = m_readFile, path, maxBytes](const std::stop_token &stop) {
            return readFile(path, maxBytes, stop);
        },
        context, std::move(done));
}

int PlaylistLoader::unfinishedWork()
{
    return unfinishedWorks;
}

void PlaylistLoader::cancel()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->cancel(); });
}

void PlaylistLoader::release(std::shared_ptr<const ChannelIndex> index)
{
    QMetaObject::invokeMethod(m_worker, [index = std::move(index)]() mutable { index.reset(); });
}
