#include "channellogocache.h"

#include <QImage>
#include <QNetworkReply>
#include <QTimer>

#include <algorithm>

ChannelLogoCache::ChannelLogoCache(QObject *parent)
    : QObject(parent)
    , m_logos(cachedLogos)
    , m_failed(cachedLogos * 4)
{
    m_network.setTransferTimeout(transferTimeoutMs);
}

QPixmap ChannelLogoCache::logo(const QUrl &url)
{
    if (!url.isValid())
        return {};
    if (const QPixmap *found = m_logos.object(url))
        return *found;
    if (m_failed.contains(url) || m_inFlight.contains(url))
        return {};
    const auto queued = std::find(m_queue.begin(), m_queue.end(), url);
    if (queued != m_queue.end())
        m_queue.erase(queued);
    m_queue.push_back(url);
    // Rows scrolled past long ago are no longer wanted first; their asks are dropped.
    while (int(m_queue.size()) > maximumQueued)
        m_queue.pop_front();
    // Started on the next turn so that a whole screen of rows queues first, newest first.
    QTimer::singleShot(0, this, &ChannelLogoCache::startDownloads);
    return {};
}

void ChannelLogoCache::startDownloads()
{
    while (m_inFlight.size() < maximumDownloads && !m_queue.empty()) {
        const QUrl url = m_queue.back();
        m_queue.pop_back();
        if (m_logos.contains(url) || m_failed.contains(url) || m_inFlight.contains(url))
            continue;
        const QString scheme = url.scheme().toLower();
        if (scheme != QLatin1String("http") && scheme != QLatin1String("https")
            && scheme != QLatin1String("file")) {
            m_failed.insert(url, new bool(true));
            continue;
        }
        m_inFlight.insert(url);
        ++m_downloadsStarted;
        QNetworkReply *reply = m_network.get(QNetworkRequest(url));
        connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
            if (received > maximumLogoBytes)
                reply->abort();
        });
        connect(reply, &QNetworkReply::finished, this, [this, reply] { finish(reply); });
    }
}

void ChannelLogoCache::finish(QNetworkReply *reply)
{
    reply->deleteLater();
    const QUrl url = reply->request().url();
    m_inFlight.remove(url);
    QImage image;
    if (reply->error() == QNetworkReply::NoError)
        image.loadFromData(reply->readAll());
    if (image.isNull()) {
        m_failed.insert(url, new bool(true));
    } else {
        const QSize largest(storedHeight * 4, storedHeight);
        if (image.width() > largest.width() || image.height() > largest.height())
            image = image.scaled(largest, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        m_logos.insert(url, new QPixmap(QPixmap::fromImage(std::move(image))));
        Q_EMIT logoArrived(url);
    }
    startDownloads();
}
