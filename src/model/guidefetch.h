#pragma once
// One programme guide brought in as its bytes come, from a local file or over http/https, and
// read on the way (see GuideFeed): neither the packed nor the unpacked guide is ever held
// whole. Lives on the guide loader's thread.
#include "guide/guidefeed.h"

#include <QFile>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <functional>

class QNetworkAccessManager;
class QNetworkReply;

class GuideFetch final : public QObject
{
public:
    struct Limits
    {
        // No byte for this long and the download has timed out.
        int idleTimeoutMs = 20'000;
        // However the bytes come, a download ends this long after it started.
        int deadlineMs = 60'000;
        qint64 maxUnpackedBytes = GuideFeed::defaultMaxUnpackedBytes;
    };

    // Starts at once; done runs once, on this thread, when the guide has ended one way or
    // another. Deleting the fetch stops it without a call. networkOnly: only an http or https
    // address is fetched.
    GuideFetch(QNetworkAccessManager &network, const QUrl &url, bool networkOnly,
               XmltvReader::Options options, const Limits &limits, std::function<void()> done,
               QObject *parent = nullptr);
    ~GuideFetch() override;

    // How notices call a guide: its file name, else its host.
    static QString displayName(const QUrl &url);

    // Once done: what the user is told, and what was read (moved out).
    QStringList notices() const;
    GuideRead take() { return m_feed.take(); }

private:
    void openFile(const QString &path);
    void readFileChunk();
    void download(QNetworkAccessManager &network, const QUrl &url);
    void readReply();
    void replyFinished();
    // The end of the bytes; failure says why they stopped early, in the user's words.
    void end(const QString &failure = {});

    QString m_name;
    Limits m_limits;
    GuideFeed m_feed;
    QFile m_file;
    QPointer<QNetworkReply> m_reply;
    QTimer m_idleTimer;
    QTimer m_deadline;
    QString m_failure;
    std::function<void()> m_done;
    bool m_ended = false;
};
