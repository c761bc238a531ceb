#pragma once
// The media player the model drives: one current item at a time, transport commands, and the
// observations the model publishes. MpvPlayer implements it; tests may reach rare states with a
// double.
#include "mediatrack.h"
#include "sources/streamheaders.h"

#include <QObject>
#include <QSize>
#include <QString>
#include <QUrl>
#include <optional>

// What a file with sound and no picture says of itself, from its tags; empty when untagged.
struct SoundDescription
{
    QString title;
    QString artist;
    QString album;
    friend bool operator==(const SoundDescription &, const SoundDescription &) = default;
};

class MediaPlayer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Replaces the current item with the media at url, or with none (the player stops). A
    // network stream is asked for with the given request headers.
    virtual void replaceCurrentItem(const std::optional<QUrl> &url,
                                    const StreamHeaders &headers = {})
        = 0;
    virtual void play() = 0;
    // Loads the current item's address again, as it was asked for; for a live stream that broke
    // off after it had played.
    virtual void reloadCurrentItem() { }
    virtual void pause() = 0;
    // Seeks to the exact position, without snapping to a key frame.
    virtual void seekExactly(double seconds) = 0;
    // A fraction from 0 to 1; values outside are clamped.
    virtual void setVolume(double fraction) = 0;
    virtual void setMuted(bool muted) = 0;

    virtual bool hasItem() const = 0;
    // Playback position in seconds; not finite when unknown.
    virtual double position() const = 0;
    // Item duration in seconds; nothing when there is no item or the media is live.
    virtual std::optional<double> duration() const = 0;
    // Loaded and not paused: the rate is above 0.
    virtual bool isPlaying() const = 0;
    // Asked to play but not moving: loading, or starved of data.
    virtual bool isWaitingToPlay() const = 0;
    virtual bool isBufferEmpty() const = 0;
    virtual bool isLikelyToKeepUp() const = 0;
    // Display size of the video; empty when there is none.
    virtual QSize presentationSize() const = 0;
    // The current item, once loaded, has sound and no picture (not even cover art).
    virtual std::optional<SoundDescription> soundOnly() const { return std::nullopt; }

    // The audio and subtitle tracks of the current item; none without one.
    virtual MediaTracks tracks() const { return {}; }
    // Selects a track of kind; nothing turns subtitles off.
    virtual void selectTrack(TrackKind, std::optional<qint64>) { }
    // Adds a subtitle file to the current item and selects it; subtitleFileFailed tells when it
    // cannot be read.
    virtual void addSubtitleFile(const QString &path) { Q_EMIT subtitleFileFailed(path); }
    // Whether the selected subtitles are shown.
    virtual void setSubtitlesVisible(bool) { }
    // Whether an item whose own address answers with a channel list (an IPTV playlist) ends
    // there with channelListFound rather than playing its entries; set before the item.
    virtual void setOpensChannelLists(bool) { }

Q_SIGNALS:
    void waitingToPlayChanged(bool waiting);
    void bufferEmptyChanged(bool empty);
    void likelyToKeepUpChanged(bool likely);
    void hasItemChanged(bool hasItem);
    void presentationSizeChanged(QSize size);
    void soundOnlyChanged();
    void tracksChanged();
    // The current item has played to its end (for a live stream: the stream stopped).
    void endReached();
    void subtitleFileFailed(const QString &path);
    // The current item could not be opened or broke off; reason says why in a sentence for the
    // user, or is empty when the player cannot tell.
    void playbackFailed(const QString &reason);
    // The current item's address answered with a channel list: the item ended without a
    // failure, and the list is the caller's to open.
    void channelListFound(const QUrl &url);
};
