#pragma once
// The media player on libmpv. This class is the one owner of the mpv handle: it sets the
// options, observes properties through one table and turns them into typed state, and drains
// mpv's events on the main thread. Video is drawn by a render context made on handle().
#include "mediaplayer.h"
#include "mpvfileoptions.h"
#include "playlistexpansion.h"
#include <QHash>
#include <QList>
#include <QStringList>
#include <QVariantMap>
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

    void replaceCurrentItem(const std::optional<QUrl> &url,
                            const StreamHeaders &headers = {}) override;
    void play() override;
    void pause() override;
    void reloadCurrentItem() override;
    void seekExactly(double seconds) override;
    void setVolume(double fraction) override;
    void setMuted(bool muted) override;

    bool hasItem() const override { return m_hasItem; }
    double position() const override { return m_position; }
    std::optional<double> duration() const override;
    bool isPlaying() const override { return m_hasItem && !m_paused && !m_eofReached; }
    bool isWaitingToPlay() const override;
    bool isBufferEmpty() const override { return m_pausedForCache; }
    bool isLikelyToKeepUp() const override { return !m_pausedForCache; }
    QSize presentationSize() const override { return m_presentationSize; }
    std::optional<SoundDescription> soundOnly() const override { return m_soundOnly; }
    MediaTracks tracks() const override { return m_tracks; }
    void selectTrack(TrackKind kind, std::optional<qint64> id) override;
    void addSubtitleFile(const QString &path) override;
    void setSubtitlesVisible(bool visible) override;
    void setOpensChannelLists(bool opens) override { m_opensChannelLists = opens; }

    // Subtitles drawn by the view over the picture it shows, instead of by mpv into the video:
    // for display modes that crop or turn the picture, where mpv's would be cut or lie on their
    // side.
    void setSubtitlesDrawnByView(bool drawnByView);
    bool subtitlesVisible() const { return m_subtitlesVisible; }
    // The text of the subtitle due now, formatting stripped; empty when none.
    const QString &subtitleText() const { return m_subtitleText; }

    // The hardware decoder mpv uses for the current video ("vaapi", "nvdec", ...), or "no"
    // when the CPU decodes it.
    QString hardwareDecoder() const;

    // For the render context of the view that draws the video; stays owned here.
    mpv_handle *handle() const { return m_handle.get(); }

Q_SIGNALS:
    // Emitted before the handle goes away, so that render contexts are freed first.
    void aboutToDestroyHandle();
    // The first frame after loading or seeking is ready to be shown.
    void playbackRestarted();
    void subtitleTextChanged(const QString &text);
    void subtitlesVisibleChanged(bool visible);

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
    // False when mpv refused the command outright.
    bool command(const QVariantMap &arguments, quint64 replyTo = 0);
    void handleLoadReply(const mpv_event &event);
    void handleEnd(qint64 entryID, int reason, qint64 insertedID, qint64 insertedCount);
    // Loads url as the current item's address (the item's or an entry of its playlist), with
    // the item's options; false when mpv refused the command.
    bool load(const QUrl &url);
    // Drops what was known of the item being replaced.
    void forgetCurrentItem();
    // Loads the next entry of the playlist the item turned out to be; false when none is left.
    bool loadNextEntry();
    void handleLoadHook(quint64 hookID);
    bool isCurrentItemStarted() const { return m_awaitedLoad == 0 && m_currentStarted; }
    void updatePresentationSize();
    // Reads the loaded item's tracks and tags; nothing when it has a picture.
    std::optional<SoundDescription> describeSoundOnly() const;
    void setSoundOnly(const std::optional<SoundDescription> &soundOnly);
    void updateWaiting();
    void setHasItem(bool hasItem);
    // Tracks (in mpvplayertracks.cpp).
    void setTracks(const MediaTracks &tracks);
    // Reads the loaded item's tracks and starts it on the ones the user most likely wants.
    void chooseInitialTracks();
    void handleSubtitleReply(quint64 replyID, int error);
    void setSubtitleText(const QString &text);
    void updateSubtitleVisibility();

    // A failed load ends the item as mpv's own failures do.
    struct EndedItem
    {
        qint64 entryID;
        int reason;
        qint64 insertedID;
        qint64 insertedCount;
    };

    std::unique_ptr<mpv_handle, HandleDeleter> m_handle;
    bool m_hasItem = false;
    // The current item is told apart from earlier ones by mpv's playlist entry id, which the
    // reply to its load command names. Until that reply comes, ends are kept to be matched.
    quint64 m_lastReplyID = 0;
    quint64 m_awaitedLoad = 0; // the load whose reply is awaited; 0 when none
    qint64 m_currentEntry = -1; // mpv's id of the current item; -1 when none or unknown
    bool m_currentStarted = false; // mpv has started the current item
    QList<EndedItem> m_endsBeforeReply;
    qint64 m_startingEntry = -1; // the entry mpv started last
    // What the current item was loaded with, for the entries of a playlist it turns out to be.
    QUrl m_itemUrl;
    StreamHeaders m_headers;
    bool m_itemIsLocal = false;
    MpvFileOptions::Reconnect m_reconnect = MpvFileOptions::Reconnect::afterCuts;
    PlaylistExpansion m_expansion; // the lists the item turned out to be, and their entries
    QStringList m_itemMessages; // mpv's warnings and errors since the item was loaded
    bool m_opensChannelLists = false;
    bool m_failurePending = false; // the item failed; told once mpv's messages are read
    bool m_paused = true;
    bool m_eofReached = false; // the current item has played to its end
    bool m_pausedForCache = false;
    bool m_firstFrameShown = false;
    bool m_waiting = false;
    double m_position = qQNaN();
    std::optional<double> m_duration;
    bool m_isHls = false;
    bool m_seekable = false;
    qint64 m_displayWidth = 0;
    qint64 m_displayHeight = 0;
    qint64 m_rotation = 0; // degrees clockwise the picture is shown turned
    QSize m_presentationSize;
    std::optional<SoundDescription> m_soundOnly;
    MediaTracks m_tracks;
    bool m_subtitlesVisible = true;
    bool m_subtitlesDrawnByView = false;
    QString m_subtitleText;
    QHash<quint64, QString> m_subtitleFilesAdding; // by the reply awaited
};
