#pragma once
// Channel logos, fetched only when a row asks while on screen: a few downloads at a time, the
// latest asks first, small decoded pictures in a bounded cache, failures remembered.
#include <QCache>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPixmap>
#include <QSet>
#include <QUrl>
#include <deque>

class QNetworkReply;

class ChannelLogoCache final : public QObject
{
    Q_OBJECT

public:
    static constexpr int maximumDownloads = 4;
    static constexpr int maximumQueued = 48;
    static constexpr int cachedLogos = 400;
    static constexpr qint64 maximumLogoBytes = 2 * 1024 * 1024;
    static constexpr int transferTimeoutMs = 20000;
    // Logos are kept at twice the logo box's height, sharp on high-density screens.
    static constexpr int storedHeight = 58;

    explicit ChannelLogoCache(QObject *parent = nullptr);

    // The logo when it has arrived; otherwise a null pixmap, and the logo is asked for.
    QPixmap logo(const QUrl &url);
    int downloadsStarted() const { return m_downloadsStarted; }

Q_SIGNALS:
    void logoArrived(const QUrl &url);

private:
    void startDownloads();
    void finish(QNetworkReply *reply);

    QNetworkAccessManager m_network;
    QCache<QUrl, QPixmap> m_logos;
    QCache<QUrl, bool> m_failed;
    std::deque<QUrl> m_queue; // newest asks at the back
    QSet<QUrl> m_inFlight;
    int m_downloadsStarted = 0;
};
