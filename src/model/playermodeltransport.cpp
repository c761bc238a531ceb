// PlayerModel: transport with its two routes, observation, buffering indicator, notices and
// the keyboard and pointer monitor.
#include "playerinputmonitor.h"
#include "playermodel.h"
#include "transportscripts.h"
#include "webplayerscripts.h"

#include <algorithm>
#include <cmath>

void PlayerModel::evaluateInWebPlayer(const QString &script)
{
    if (m_webPlayerScripts)
        m_webPlayerScripts->evaluate(script);
}

void PlayerModel::togglePlayback()
{
    if (m_youtubeContent) {
        evaluateInWebPlayer(TransportScripts::toggle());
        setIsPlaying(!m_isPlaying);
        return;
    }
    if (m_reconnectAttempt > 0) {
        // A pause ends the tries; play brings the channel back.
        endLiveRecovery();
        m_wantsToPlay = false;
        m_player->pause();
        refreshBufferingState();
        setIsPlaying(false);
        return;
    }
    if (!m_player->hasItem()) {
        if (!m_isLiveStream || !m_liveStarted)
            return;
        m_player->reloadCurrentItem();
    }
    if (m_player->isPlaying())
        m_player->pause();
    else
        m_player->play();
    m_wantsToPlay = m_player->isPlaying();
    // A live item asked to play again is given its full time to move before it counts as
    // broken off.
    m_lastLiveProgressMs = m_liveClock.elapsed();
    setIsPlaying(m_player->isPlaying());
}

void PlayerModel::skip(double seconds)
{
    if (m_youtubeContent) {
        evaluateInWebPlayer(TransportScripts::skip(seconds));
        return;
    }
    if (m_archive) {
        seekArchive(m_currentTime + seconds);
        return;
    }
    // The end first, then the start: with an unknown duration (0) every skip lands at 0.
    double target = m_currentTime + seconds;
    if (!(target < m_duration))
        target = m_duration;
    if (target < 0)
        target = 0;
    m_player->seekExactly(target);
    // The position jumps now; the periodic observer would only see it on its next tick.
    setCurrentTime(target);
    Q_EMIT seeked(target);
}

void PlayerModel::seek(double seconds)
{
    if (m_archive) {
        seekArchive(seconds);
        return;
    }
    m_player->seekExactly(seconds);
    Q_EMIT seeked(seconds);
}

void PlayerModel::setVolume(double value)
{
    publish(m_volume, value, &PlayerModel::volumeChanged);
    setIsMuted(value == 0);
    if (m_youtubeContent) {
        evaluateInWebPlayer(TransportScripts::setVolume(value));
        return;
    }
    m_player->setVolume(m_volume);
    m_player->setMuted(m_isMuted);
}

void PlayerModel::changeVolume(double by)
{
    // In whole percent, so that steps up and down meet again.
    setVolume(std::clamp(std::round((m_volume + by) * 100) / 100, 0.0, 1.0));
}

void PlayerModel::toggleMute()
{
    setIsMuted(!m_isMuted);
    if (m_youtubeContent)
        evaluateInWebPlayer(TransportScripts::setMuted(m_isMuted));
    else
        m_player->setMuted(m_isMuted);
}

void PlayerModel::stop()
{
    m_player->pause();
    m_player->replaceCurrentItem(std::nullopt);
    m_observingItemBuffer = false;
    setCurrentTime(0);
    setDuration(0);
    setIsPlaying(false);
    setTitle(noMediaTitle.toString());
    setYouTubeContent(std::nullopt);
    hideBufferingIndicator();
    m_playingChannel.reset();
    playingChannelChanged();
    if (m_archive) {
        m_archive.reset();
        Q_EMIT archiveChanged();
    }
    forgetLiveItem();
    m_wantsToPlay = false;
}

void PlayerModel::observeTime()
{
    if (m_youtubeContent)
        return;
    const double position = m_player->position();
    if (m_archive) {
        // The programme, not the source, sets the position and its end.
        const double length = double(m_archive->programme.stop - m_archive->programme.start);
        setCurrentTime(std::clamp(m_archive->loadedFrom + (std::isfinite(position) ? position : 0),
                                  0.0, length));
        setDuration(length);
    } else {
        setCurrentTime(std::isfinite(position) ? position : 0);
        setDuration(m_player->hasItem() ? m_player->duration().value_or(0) : 0);
    }
    // While a live channel is being brought back, it is still meant to play.
    setIsPlaying(m_reconnectAttempt > 0 || m_player->isPlaying());
    const QSize size = m_player->presentationSize();
    if (size.width() > 0 && size.height() > 0) {
        const double ratio = double(size.width()) / size.height();
        if (std::abs(ratio - m_videoAspectRatio) > 0.001)
            setVideoAspectRatio(ratio);
    }
}

void PlayerModel::refreshBufferingState()
{
    // A live channel being brought back shows as buffering throughout.
    if (m_reconnectAttempt > 0) {
        setIsBuffering(true);
        return;
    }
    // Only live streams show the indicator: a file that stalls is not worth a spinner.
    if (m_isLiveStream && m_player->hasItem() && m_player->isWaitingToPlay())
        showBufferingIndicatorAfterDelay();
    else
        hideBufferingIndicator();
}

void PlayerModel::showBufferingIndicatorAfterDelay()
{
    if (m_isBuffering || m_bufferingIndicatorTask.isActive())
        return;
    m_bufferingIndicatorTask.start();
}

void PlayerModel::hideBufferingIndicator()
{
    m_bufferingIndicatorTask.stop();
    setIsBuffering(false);
}

void PlayerModel::showToast(const QString &text, const QString &detail)
{
    m_toastTask.stop();
    const bool detailChanged = detail != m_toastDetail;
    m_toastDetail = detail;
    // The same text with another detail is a new notice all the same.
    if (detailChanged && text == m_toastMessage)
        Q_EMIT toastMessageChanged();
    setToastMessage(text);
    m_toastTask.start();
}

void PlayerModel::installKeyboardShortcuts()
{
    if (m_inputMonitor)
        return;
    m_inputMonitor = std::make_unique<PlayerInputMonitor>(
        [this](const KeyboardShortcuts::Action &action) {
            if (const auto *skipBy = std::get_if<KeyboardShortcuts::Skip>(&action))
                skip(skipBy->seconds);
            else if (std::holds_alternative<KeyboardShortcuts::Stop>(action))
                stop();
            else if (std::holds_alternative<KeyboardShortcuts::TogglePlayback>(action))
                togglePlayback();
            else if (std::holds_alternative<KeyboardShortcuts::ToggleMute>(action))
                toggleMute();
            else if (const auto *change = std::get_if<KeyboardShortcuts::ChangeVolume>(&action))
                changeVolume(change->by);
            else if (std::holds_alternative<KeyboardShortcuts::ToggleFullScreen>(action))
                Q_EMIT fullScreenToggleRequested();
            else if (std::holds_alternative<KeyboardShortcuts::LeaveFullScreen>(action))
                Q_EMIT fullScreenLeaveRequested();
            else if (const auto *cycle = std::get_if<KeyboardShortcuts::CycleTrack>(&action))
                cycleTrack(cycle->kind);
            else if (std::holds_alternative<KeyboardShortcuts::ToggleSubtitles>(action))
                toggleSubtitlesVisible();
            else if (const auto *step = std::get_if<KeyboardShortcuts::StepChannel>(&action))
                Q_EMIT channelStepRequested(step->step);
        },
        nullptr);
}
