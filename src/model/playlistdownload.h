#pragma once
// One GET of a remote playlist with the player's limits, ending in its bytes or in a
// description of the failure that a user understands.
#include "playlistload.h"
#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <functional>

#include "downloadrequest.h"

class QNetworkAccessManager;
class QNetworkReply;

struct PlaylistDownloadLimits
{
    // No byte for this long, headers included, and the request has timed out. There is no
    // limit on the whole download: a slow server that keeps sending is waited for, bounded by
    // maxBytes, and the user can always leave it for another choice.
    int idleTimeoutMs = 20'000;
    qint64 maxBytes = maxPlaylistBytes;
};

class PlaylistDownload final : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        QByteArray bytes;
        QString error; // null when the download succeeded
    };
    using Completion = std::function<void(Result)>;

    // Starts at once; completion runs once, on this thread. Deleting the download aborts it
    // silently.
    PlaylistDownload(QNetworkAccessManager &network, const QUrl &url,
                     const PlaylistDownloadLimits &limits, Completion completion,
                     QObject *parent = nullptr);
    ~PlaylistDownload() override;

private:
    void finish();
    void fail(const QString &description);

    QPointer<QNetworkReply> m_reply;
    PlaylistDownloadLimits m_limits;
    Completion m_completion;
    QTimer m_idleTimer;
    QString m_abortReason; // why we aborted the reply ourselves
    QByteArray m_body;
};
