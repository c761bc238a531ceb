#include "playlistdownload.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

QString downloadTimedOutDescription()
{
    return QStringLiteral("The request timed out.");
}

QString networkErrorDescription(QNetworkReply::NetworkError error, const QString &fallback)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("Could not connect to the server.");
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("A server with the specified hostname could not be found.");
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError:
        return downloadTimedOutDescription();
    case QNetworkReply::RemoteHostClosedError:
        return QStringLiteral("The network connection was lost.");
    case QNetworkReply::TooManyRedirectsError:
    case QNetworkReply::InsecureRedirectError:
        return QStringLiteral("The server redirected too many times.");
    case QNetworkReply::SslHandshakeFailedError:
        return QStringLiteral("A secure connection to the server cannot be made.");
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::TemporaryNetworkFailureError:
        return QStringLiteral("The Internet connection appears to be offline.");
    case QNetworkReply::ProtocolUnknownError:
        return QStringLiteral("The address is not supported.");
    default:
        return fallback.isEmpty() ? QStringLiteral("The download failed.") : fallback + u'.';
    }
}

QNetworkRequest downloadRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::PreferNetwork);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(10);
    return request;
}

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
