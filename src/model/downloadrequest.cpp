#include "downloadrequest.h"

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
