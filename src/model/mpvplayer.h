#pragma once
// The media player on libmpv. This class is the one owner of the mpv handle: it sets the
// options, observes properties through one table and turns them into typed state, and drains
// mpv's events on the main thread. Video is drawn by a render context made on handle().
#include "mediaplayer.h"
#include <memory>

struct mpv_handle;
struct mpv_event;

class MpvPlayer final : public MediaPlayer
{
    Q_OBJECT

public:
    enum class VideoOutput {
        renderContext, // drawn through the render API by a view (the application)
        none, // decoded but not drawn: headless use
    };

    explicit MpvPlayer(VideoOutput output = VideoOutput::renderContext, QObject *parent = nullptr);
    ~MpvPlayer() override;

    void replaceCurrentItem(const std::optional<QUrl> &url) override;
    void play() override;
    void pause() override;
    void seekExactly(double seconds) override;
    void setVolume(double fraction) override;
    void setMuted(bool muted) override;

    bool hasItem() const override { return m_hasItem; }
    double position() const override { return m_position; }
    std::optional<double> duration() const override;
    bool isPlaying() const override { return m_hasItem && !m_paused; }
    bool isWaitingToPlay() const override;
    bool isBufferEmpty() const override { return m_pausedForCache; }
    bool isLikelyToKeepUp() const override { return !m_pausedForCache; }
    QSize presentationSize() const override { return m_presentationSize; }

    // For the render context of the view that draws the video; stays owned here.
    mpv_handle *handle() const { return m_handle.get(); }

Q_SIGNALS:
    // Emitted before the handle goes away, so that render contexts are freed first.
    void aboutToDestroyHandle();
    // The first frame after loading or seeking is ready to be shown.
    void playbackRestarted();

private:
    struct HandleDeleter
    {
        void operator()(mpv_handle *handle) const;
    };
    struct ObservedProperty;
    static const ObservedProperty s_observed[];

    void drainEvents();
    void handleEvent(const mpv_event &event);
    void handleProperty(const char *name, int format, void *data);
    void command(std::initializer_list<const char *> args);
    void updateWaiting();
    void setHasItem(bool hasItem);

    std::unique_ptr<mpv_handle, HandleDeleter> m_handle;
    bool m_hasItem = false;
    int m_pendingStarts = 0; // items asked for whose start mpv has not reported yet
    bool m_paused = true;
    bool m_pausedForCache = false;
    bool m_firstFrameShown = false;
    bool m_waiting = false;
    double m_position = qQNaN();
    std::optional<double> m_duration;
    bool m_isHls = false;
    bool m_seekable = false;
    qint64 m_displayWidth = 0;
    qint64 m_displayHeight = 0;
    QSize m_presentationSize;
};
