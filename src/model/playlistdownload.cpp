#include "playlistdownload.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

PlaylistDownload::PlaylistDownload(QNetworkAccessManager &network, const QUrl &url,
                                   const PlaylistDownloadLimits &limits, Completion completion,
                                   QObject *parent)
    : QObject(parent)
    , m_limits(limits)
    , m_completion(std::move(completion))
{
    m_reply = network.get(downloadRequest(url));

    m_idleTimer.setSingleShot(true);
    // A server that stops sending, before or after its headers, times out like a silent one.
    connect(&m_idleTimer, &QTimer::timeout, this, [this] { fail(downloadTimedOutDescription()); });
    m_idleTimer.start(m_limits.idleTimeoutMs);

    connect(m_reply, &QNetworkReply::metaDataChanged, this, [this] {
        m_idleTimer.start(m_limits.idleTimeoutMs);
        const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > m_limits.maxBytes)
            fail(playlistTooLargeDescription(m_limits.maxBytes));
        else if (length.isValid() && m_body.isEmpty())
            m_body.reserve(length.toLongLong());
    });
    // Taking the body as it arrives keeps each step on this thread short; one readAll at the
    // end would copy tens of megabytes at once.
    connect(m_reply, &QIODevice::readyRead, this, [this] { m_body.append(m_reply->readAll()); });
    connect(m_reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        m_idleTimer.start(m_limits.idleTimeoutMs);
        if (received > m_limits.maxBytes)
            fail(playlistTooLargeDescription(m_limits.maxBytes));
    });
    connect(m_reply, &QNetworkReply::finished, this, &PlaylistDownload::finish);
}

PlaylistDownload::~PlaylistDownload()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
}

void PlaylistDownload::fail(const QString &description)
{
    if (!m_reply || !m_abortReason.isNull())
        return;
    m_abortReason = description;
    m_reply->abort(); // finishes the reply, which reports m_abortReason
}

void PlaylistDownload::finish()
{
    m_idleTimer.stop();
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->deleteLater();

    Result result;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool redirectFailure = reply->error() == QNetworkReply::TooManyRedirectsError
        || reply->error() == QNetworkReply::InsecureRedirectError;
    if (!m_abortReason.isNull()) {
        result.error = m_abortReason;
    } else if (redirectFailure) {
        result.error = networkErrorDescription(reply->error(), QString());
    } else if (status != 0 && (status < 200 || status > 299)) {
        result.error = QStringLiteral("The server returned an error (%1).").arg(status);
    } else if (reply->error() != QNetworkReply::NoError) {
        result.error = networkErrorDescription(reply->error(), reply->errorString());
    } else {
        m_body.append(reply->readAll());
        result.bytes = std::move(m_body);
    }
    // The completion may delete this download; nothing here runs after it.
    Completion completion = std::move(m_completion);
    completion(std::move(result));
}
