#pragma once
// Downloads, decodes and parses playlists on a thread of its own, so that tens of megabytes of
// channel list never pass through the main thread. Each result is handed to its callback on
// the context object's thread; a newer load aborts an older download.
#include "playlistdownload.h"
#include "playlistload.h"
#include <QObject>
#include <QThread>
#include <functional>

class PlaylistLoader final : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const PlaylistLoadResult &)>;

    PlaylistLoader();
    // Aborts what is running and joins the thread: no callback runs after this.
    ~PlaylistLoader() override;

    // Errors come back as the download's or the playlist's description.
    void load(const QUrl &url, const PlaylistDownloadLimits &limits, QObject *context, Done done);
    void loadFile(const QString &path, qint64 maxBytes, QObject *context, Done done);
    // Abandons the current download, if any, without a callback.
    void cancel();
    // Frees a channel list on the loader's thread; freeing 200,000 channels takes tens of
    // milliseconds.
    void release(QList<PlaylistEntry> entries);

private:
    class Worker;
    QThread m_thread;
    Worker *m_worker = nullptr; // lives on m_thread
};
