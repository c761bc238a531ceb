#pragma once
// Downloads, decodes and parses playlists away from the main thread, so that tens of megabytes
// of channel list never pass through it. Downloads run on a thread of their own; reading a file
// and parsing run on a thread each, which nobody joins: a read on a stalled mount may never
// end, and must hold up neither later loads nor quitting. Each result is handed to its callback
// on the context object's thread; a newer download aborts an older one.
#include "playlistdownload.h"
#include "playlistload.h"
#include <QObject>
#include <QThread>
#include <algorithm>
#include <functional>
#include <memory>
#include <stop_token>

class PlaylistLoader final : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const PlaylistLoadResult &)>;
    // The loader's threads yield to the interface thread by this much (a nice value).
    static constexpr int backgroundNiceIncrement = 10;
    // The nice value of a loader thread started from a thread of nice value inherited: lower
    // by the increment, within Linux's range, so a player started with nice stays behind.
    static constexpr int backgroundNice(int inherited)
    {
        return std::min(inherited + backgroundNiceIncrement, 19);
    }
    // Reads and loads a local playlist of at most maxBytes, giving up once stop is requested;
    // may block for as long as the file system does.
    using FileReader = std::function<PlaylistLoadResult(const QString &path, qint64 maxBytes,
                                                        const std::stop_token &stop)>;

    explicit PlaylistLoader(FileReader readFile = &loadPlaylistFile);
    // Aborts the download under way, stops the download thread and tells the reads and parses
    // still running to give up, which a parse does within milliseconds; they are waited for a
    // second at most, then left behind (a read blocked by its file system). No callback runs
    // after this.
    ~PlaylistLoader() override;

    // How many reads and parses of all loaders, destroyed ones included, are still running.
    // A process that ends while one is must not run its static destructors under it.
    static int unfinishedWork();

    // Errors come back as the download's or the playlist's description.
    void load(const QUrl &url, const PlaylistDownloadLimits &limits, QObject *context, Done done);
    void loadFile(const QString &path, qint64 maxBytes, QObject *context, Done done);
    // Abandons the current download, if any, without a callback.
    void cancel();
    // Frees a channel list (held by its index) on the loader's thread; freeing 200,000
    // channels takes tens of milliseconds. The caller must hold no other reference to it.
    void release(std::shared_ptr<const ChannelIndex> index);

private:
    class Worker;
    struct Mailbox;
    template<typename Work>
    static void runDetached(std::shared_ptr<Mailbox> mailbox, Work work, QObject *context,
                            Done done);

    FileReader m_readFile;
    std::shared_ptr<Mailbox> m_mailbox; // shared with the reads and parses under way
    QThread m_thread;
    Worker *m_worker = nullptr; // lives on m_thread
};
