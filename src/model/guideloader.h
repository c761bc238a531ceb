#pragma once
// Loads a playlist's programme guides away from the interface thread: at most four at once,
// each read as its bytes come, then merged for the playlist's entries. The interface thread
// only receives the finished guide. A newer load replaces an older one, whose result never
// comes.
#include "guide/programmeguide.h"
#include "guidefetch.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QUrl>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class GuideLoader final : public QObject
{
public:
    struct Limits
    {
        GuideFetch::Limits fetch;
        int atOnce = 4;
    };
    struct Request
    {
        QList<QUrl> guides; // in the order their programmes take precedence
        QList<PlaylistEntry> entries;
        std::optional<qint32> playlistShift; // seconds
        qint64 moment = 0; // what the kept programmes lie around, seconds since the epoch
        // Guides named by a playlist from the network: fetched only over http and https, so
        // that a server cannot have a file of this computer read.
        QList<QUrl> networkOnly;
    };
    struct Result
    {
        std::shared_ptr<const ProgrammeGuide> guide; // never null
        QStringList notices; // of the guides shown so far, in their order
        qsizetype firstNewNotice = 0; // notices from here on are shown for the first time
        bool complete = false; // every guide has ended: nothing more comes
    };
    using Done = std::function<void(const Result &)>;

    GuideLoader();
    // Stops the loads under way (a read blocked by its file system is waited for); no callback
    // runs after this.
    ~GuideLoader() override;

    void setLimits(const Limits &limits) { m_limits = limits; }
    // done runs on context's thread each time more guides can be shown (the first ones that
    // have ended, in order), the last time with complete set, unless another load or cancel()
    // comes first.
    void load(Request request, QObject *context, Done done);
    void cancel();

private:
    class Worker;
    Limits m_limits;
    std::shared_ptr<std::atomic<quint64>> m_current; // the load whose result is wanted
    // Set when the loader goes: a guide being read stops at once rather than when its reading
    // thread next asks for bytes.
    std::shared_ptr<std::atomic<bool>> m_closing;
    QThread m_thread;
    Worker *m_worker = nullptr; // lives on m_thread
};
