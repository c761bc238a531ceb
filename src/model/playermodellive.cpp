// PlayerModel's watch over live items: one that stops, or stands still while the user wants it
// to play, is loaded again inside the player (its title and shape stay) after 1, 2, 4, 8 and
// 16 s, until it moves again or the tries are spent.
#include "liverecovery.h"
#include "playermodel.h"

#include <cmath>

void PlayerModel::connectLiveWatch()
{
    m_liveClock.start();
    m_liveWatch.setInterval(1000);
    connect(&m_liveWatch, &QTimer::timeout, this, &PlayerModel::watchLiveProgress);
    m_liveWatch.start();
    m_reconnectTask.setSingleShot(true);
    connect(&m_reconnectTask, &QTimer::timeout, this, &PlayerModel::tryReconnect);
    connect(m_player.get(), &MediaPlayer::endReached, this, [this] {
        if (isWatchingLiveItem() && m_liveStarted)
            liveItemBrokeOff(QString());
    });
}

bool PlayerModel::isWatchingLiveItem() const
{
    return m_isLiveStream && !m_youtubeContent && m_wantsToPlay;
}

void PlayerModel::watchLiveProgress()
{
    const qint64 now = m_liveClock.elapsed();
    if (!isWatchingLiveItem()) {
        m_lastLiveProgressMs = now;
        return;
    }
    const double position = m_player->position();
    if (m_player->hasItem() && std::isfinite(position) && position != m_lastLivePosition) {
        m_lastLivePosition = position;
        m_lastLiveProgressMs = now;
        m_liveStarted = true;
        if (m_reconnectAttempt > 0) {
            // Back, after a try or before the next one was due: it plays on from here, and no
            // try is left pending.
            endLiveRecovery();
            refreshBufferingState();
            setIsPlaying(m_player->isPlaying());
        }
        return;
    }
    if (!m_liveStarted || m_reconnectTask.isActive())
        return;
    if (now - m_lastLiveProgressMs >= LiveRecovery::stallMs)
        liveItemBrokeOff(QString());
}

void PlayerModel::liveItemBrokeOff(const QString &reason)
{
    if (m_reconnectAttempt >= LiveRecovery::attempts) {
        // The tries are spent: it ends as any item that cannot be played.
        const QString title = m_title;
        endLiveRecovery();
        m_wantsToPlay = false;
        showToast(QStringLiteral("Could not play %1.").arg(title), reason);
        stop();
        return;
    }
    ++m_reconnectAttempt;
    setIsBuffering(true);
    setIsPlaying(true);
    m_reconnectTask.start(LiveRecovery::delayMs(m_reconnectAttempt));
}

void PlayerModel::tryReconnect()
{
    m_reconnectNotice = LiveRecovery::notice(m_reconnectAttempt);
    showToast(m_reconnectNotice);
    m_lastLiveProgressMs = m_liveClock.elapsed();
    m_player->reloadCurrentItem();
    m_player->play();
}

void PlayerModel::endLiveRecovery()
{
    m_reconnectTask.stop();
    m_reconnectAttempt = 0;
    // A try's notice is true only while the try is pending.
    if (!m_reconnectNotice.isEmpty() && m_toastMessage == m_reconnectNotice) {
        m_toastTask.stop();
        m_toastDetail.clear();
        setToastMessage(QString());
    }
    m_reconnectNotice.clear();
}

void PlayerModel::forgetLiveItem()
{
    endLiveRecovery();
    m_liveStarted = false;
    m_lastLivePosition = qQNaN();
    m_lastLiveProgressMs = m_liveClock.elapsed();
}
