#pragma once
// A media player whose waiting state and tracks the test sets at will, to reach stalls of an
// exact length and track lists that a real stream cannot be held to.
#include "model/mediaplayer.h"

#include <QList>
#include <QStringList>

class ScriptedMediaPlayer final : public MediaPlayer
{
public:
    void replaceCurrentItem(const std::optional<QUrl> &url,
                            const StreamHeaders &headers = {}) override
    {
        items.append(url);
        itemHeaders.append(headers);
        if (m_hasItem == url.has_value())
            return;
        m_hasItem = url.has_value();
        Q_EMIT hasItemChanged(m_hasItem);
    }
    void play() override { m_playing = true; }
    void pause() override { m_playing = false; }
    void seekExactly(double seconds) override
    {
        seeks.append(seconds);
        m_position = seconds;
    }
    void setVolume(double) override { }
    void setMuted(bool) override { }

    bool hasItem() const override { return m_hasItem; }
    double position() const override { return m_position; }
    std::optional<double> duration() const override { return m_duration; }
    bool isPlaying() const override { return m_hasItem && m_playing; }
    bool isWaitingToPlay() const override { return m_hasItem && m_playing && m_waiting; }
    bool isBufferEmpty() const override { return m_waiting; }
    bool isLikelyToKeepUp() const override { return !m_waiting; }
    QSize presentationSize() const override { return m_presentationSize; }
    std::optional<SoundDescription> soundOnly() const override { return m_soundOnly; }
    MediaTracks tracks() const override { return m_tracks; }
    void selectTrack(TrackKind kind, std::optional<qint64> id) override
    {
        for (MediaTrack &track : m_tracks)
            if (track.kind == kind)
                track.isSelected = id && track.id == *id;
        Q_EMIT tracksChanged();
    }
    void addSubtitleFile(const QString &path) override { subtitleFiles.append(path); }

    void setWaiting(bool waiting)
    {
        m_waiting = waiting;
        Q_EMIT bufferEmptyChanged(waiting);
        Q_EMIT waitingToPlayChanged(isWaitingToPlay());
    }

    void setDuration(std::optional<double> seconds) { m_duration = seconds; }
    void setPosition(double seconds) { m_position = seconds; }
    void setPresentationSize(QSize size) { m_presentationSize = size; }
    void setSoundOnly(std::optional<SoundDescription> sound)
    {
        m_soundOnly = std::move(sound);
        Q_EMIT soundOnlyChanged();
    }

    void setTracks(const MediaTracks &tracks)
    {
        m_tracks = tracks;
        Q_EMIT tracksChanged();
    }

    // Every item, exact seek and subtitle file asked for, in order.
    QList<std::optional<QUrl>> items;
    QList<StreamHeaders> itemHeaders;
    QList<double> seeks;
    QStringList subtitleFiles;

private:
    bool m_hasItem = false;
    bool m_playing = false;
    bool m_waiting = false;
    std::optional<SoundDescription> m_soundOnly;
    MediaTracks m_tracks;
    double m_position = 0;
    std::optional<double> m_duration = 100.0;
    QSize m_presentationSize {640, 360};
};
