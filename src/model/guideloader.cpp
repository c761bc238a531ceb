#include "guideloader.h"

#include "guide/guidewants.h"

#include <QNetworkAccessManager>
#include <QPointer>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace {
// Programmes read are kept this far around the window any shift could move into view; the
// exact window is cut once the entries' shifts are known.
constexpr qint64 maxShiftAhead = 14 * 3600;
constexpr qint64 maxShiftBehind = 12 * 3600;
// The channels a load keeps, worked out when a guide first names one: a guide that never arrives
// costs nothing, and the publication of a large playlist does not share the machine with it.
// Asked from the guides' reading threads.
class LazyWants
{
public:
    explicit LazyWants(QList<PlaylistEntry> entries)
        : m_entries(std::move(entries))
    { }

    bool wants(const GuideChannel &channel) const
    {
        make();
        return m_wants->wants(channel);
    }
    // Whether an entry with an archive may belong to the channel.
    bool wantsArchive(const GuideChannel &channel) const
    {
        make();
        return m_archiveWants && m_archiveWants->wants(channel);
    }

private:
    void make() const
    {
        std::call_once(m_once, [this] {
            m_wants.emplace(m_entries);
            QList<PlaylistEntry> archived;
            for (const PlaylistEntry &entry : m_entries) {
                if (entry.catchup())
                    archived.append(entry);
            }
            if (!archived.isEmpty())
                m_archiveWants.emplace(archived);
        });
    }

    const QList<PlaylistEntry> m_entries;
    mutable std::once_flag m_once;
    mutable std::optional<GuideWants> m_wants;
    mutable std::optional<GuideWants> m_archiveWants;
};

} // namespace

// One load: its guides fetched a few at a time, then merged.
class GuideLoad final : public QObject
{
public:
    GuideLoad(QNetworkAccessManager &network, GuideLoader::Request request,
              const GuideLoader::Limits &limits, std::shared_ptr<const std::atomic<bool>> closing,
              std::function<void(GuideLoader::Result)> done, QObject *parent)
        : QObject(parent)
        , m_network(network)
        , m_closing(std::move(closing))
        , m_request(std::move(request))
        , m_limits(limits)
        , m_done(std::move(done))
        , m_reads(size_t(m_request.guides.size()))
        , m_notices(size_t(m_request.guides.size()))
        , m_fetches(size_t(m_request.guides.size()), nullptr)
        , m_ended(size_t(m_request.guides.size()), false)
        , m_wants(std::make_shared<const LazyWants>(m_request.entries))
    {
        for (qsizetype i = 0; i < m_request.guides.size(); ++i)
            m_waiting.push_back(i);
        startMore();
    }

private:
    void startMore()
    {
        while (!m_waiting.empty() && m_running < std::max(1, m_limits.atOnce)) {
            const qsizetype index = m_waiting.front();
            m_waiting.pop_front();
            ++m_running;
            XmltvReader::Options options;
            // Asked on the guide's reading thread: the wants are only read there.
            options.keepChannel = [wants = m_wants](const GuideChannel &channel) {
                return wants->wants(channel);
            };
            options.keepFrom = ProgrammeGuide::keptFrom(m_request.moment) - maxShiftAhead;
            options.keepArchive = [wants = m_wants](const GuideChannel &channel) {
                return wants->wantsArchive(channel);
            };
            options.archiveFrom
                = m_request.moment - qint64(CatchupSettings::maxDays) * 86400 - maxShiftAhead;
            options.keepUntil = m_request.moment + ProgrammeGuide::keptAhead + maxShiftBehind;
            options.stop = m_closing;
            // The fetch never ends inside its constructor, so it is known here by then.
            const QUrl &url = m_request.guides[index];
            m_fetches[size_t(index)] = new GuideFetch(
                m_network, url, m_request.networkOnly.contains(url), std::move(options),
                m_limits.fetch, [this, index] { fetchEnded(index); }, this);
        }
        if (m_request.guides.isEmpty())
            publish();
    }

    void fetchEnded(qsizetype index)
    {
        GuideFetch *fetch = std::exchange(m_fetches[size_t(index)], nullptr);
        m_reads[size_t(index)] = fetch->take();
        m_notices[size_t(index)] = fetch->notices();
        m_ended[size_t(index)] = true;
        fetch->deleteLater();
        --m_running;
        startMore();
        publish();
    }

    // Shows the guides that have ended with all those before them: a later guide never waits
    // for a slow one behind it, and an earlier one always takes precedence when shown.
    void publish()
    {
        size_t ready = m_shown;
        while (ready < m_ended.size() && m_ended[ready])
            ++ready;
        const bool complete = ready == m_ended.size();
        if (ready == m_shown && !(complete && m_shown == 0))
            return;
        GuideLoader::Result result;
        result.complete = complete;
        for (size_t i = 0; i < ready; ++i) {
            if (i == m_shown)
                result.firstNewNotice = result.notices.size();
            result.notices += m_notices[i];
        }
        m_shown = ready;
        if (complete) {
            result.guide = std::make_shared<const ProgrammeGuide>(
                m_reads, m_request.entries, m_request.playlistShift, m_request.moment);
            m_reads.clear();
        } else {
            const std::vector<GuideRead> shown(m_reads.begin(), m_reads.begin() + qsizetype(ready));
            result.guide = std::make_shared<const ProgrammeGuide>(
                shown, m_request.entries, m_request.playlistShift, m_request.moment);
        }
        m_done(std::move(result));
    }

    QNetworkAccessManager &m_network;
    std::shared_ptr<const std::atomic<bool>> m_closing;
    GuideLoader::Request m_request;
    GuideLoader::Limits m_limits;
    std::function<void(GuideLoader::Result)> m_done;
    std::deque<qsizetype> m_waiting;
    int m_running = 0;
    std::vector<GuideRead> m_reads;
    std::vector<QStringList> m_notices;
    std::vector<GuideFetch *> m_fetches; // by guide, while it is fetched
    std::vector<bool> m_ended; // by guide
    size_t m_shown = 0; // the guides shown so far, from the first
    std::shared_ptr<const LazyWants> m_wants;
};

// Owns the network access of the loader's thread and the load under way there.
class GuideLoader::Worker final : public QObject
{
public:
    void start(GuideLoader::Request request, const GuideLoader::Limits &limits,
               std::shared_ptr<const std::atomic<bool>> closing,
               std::function<void(GuideLoader::Result)> done)
    {
        stop();
        if (!m_network)
            m_network = new QNetworkAccessManager(this);
        m_load = new GuideLoad(*m_network, std::move(request), limits, std::move(closing),
                               std::move(done), this);
    }

    void stop()
    {
        delete m_load;
        m_load = nullptr;
    }

private:
    QNetworkAccessManager *m_network = nullptr; // made on this thread
    QPointer<GuideLoad> m_load;
};

GuideLoader::GuideLoader()
    : m_current(std::make_shared<std::atomic<quint64>>(0))
    , m_closing(std::make_shared<std::atomic<bool>>(false))
{
    m_thread.setObjectName(QStringLiteral("guide loader"));
    m_worker = new Worker;
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start(QThread::LowPriority);
}

GuideLoader::~GuideLoader()
{
    m_current->fetch_add(1);
    m_closing->store(true);
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->stop(); });
    m_thread.quit();
    m_thread.wait();
}

void GuideLoader::load(Request request, QObject *context, Done done)
{
    const quint64 generation = m_current->fetch_add(1) + 1;
    QPointer<QObject> target(context);
    auto deliver = [current = m_current, generation, target,
                    done = std::move(done)](GuideLoader::Result result) {
        if (!target)
            return;
        QMetaObject::invokeMethod(target.data(),
                                  [current, generation, done, result = std::move(result)] {
                                      if (current->load() == generation)
                                          done(result);
                                  });
    };
    QMetaObject::invokeMethod(m_worker,
                              [worker = m_worker, request = std::move(request), limits = m_limits,
                               closing = m_closing, deliver = std::move(deliver)]() mutable {
                                  worker->start(std::move(request), limits, std::move(closing),
                                                std::move(deliver));
                              });
}

void GuideLoader::cancel()
{
    m_current->fetch_add(1);
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->stop(); });
}
