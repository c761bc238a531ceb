#pragma once
// The one observable object behind the player window: it owns the media player, publishes what
// the views show, opens files, streams and playlists, runs the transport and reports errors and
// notices. Lives on the main thread.
#include "guideloader.h"
#include "mediaplayer.h"
#include "openpanels.h"
#include "playlistdownload.h"
#include "sources/lastplayablesource.h"
#include "sources/playlistentry.h"
#include "sources/playlistheader.h"
#include "sources/youtubecontent.h"
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QUuid>
#include <memory>
#include <optional>

class ChannelIndex;
class PlayerInputMonitor;
class PlaylistLoader;
struct PlaylistLoadResult;
class WebPlayerScripts;

class PlayerModel final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    // Null when there is no error.
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QList<PlaylistEntry> playlist READ playlist NOTIFY playlistChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(double volume READ volume NOTIFY volumeChanged)
    Q_PROPERTY(bool isMuted READ isMuted NOTIFY isMutedChanged)
    Q_PROPERTY(double videoAspectRatio READ videoAspectRatio NOTIFY videoAspectRatioChanged)
    Q_PROPERTY(bool isLiveStream READ isLiveStream NOTIFY isLiveStreamChanged)
    Q_PROPERTY(bool isBuffering READ isBuffering NOTIFY isBufferingChanged)
    Q_PROPERTY(std::optional<YouTubeContent> youtubeContent READ youtubeContent NOTIFY
                   youtubeContentChanged)
    // Null when no notice is shown.
    Q_PROPERTY(QString toastMessage READ toastMessage NOTIFY toastMessageChanged)
    // A second, smaller line under the notice (why an item failed); empty when there is none.
    // Changes before toastMessageChanged, which announces both.
    Q_PROPERTY(QString toastDetail READ toastDetail NOTIFY toastMessageChanged)

public:
    static constexpr QStringView noMediaTitle = u"No Media Selected";
    static constexpr QStringView applicationDisplayName = u"LumoMediaPlayerPro";
    static constexpr int timeObserverIntervalMs = 250;
    static constexpr int bufferingIndicatorDelayMs = 450;
    static constexpr int toastDurationMs = 2800;

    explicit PlayerModel(std::unique_ptr<MediaPlayer> player, QObject *parent = nullptr);
    ~PlayerModel() override;

    MediaPlayer &player() const { return *m_player; }

    const QString &title() const { return m_title; }
    const QString &errorMessage() const { return m_errorMessage; }
    bool isLoading() const { return m_isLoading; }
    const QList<PlaylistEntry> &playlist() const;
    // The playlist prepared for the channel search and menus; never null.
    const std::shared_ptr<const ChannelIndex> &channelIndex() const { return m_channelIndex; }
    bool isPlaying() const { return m_isPlaying; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }
    double volume() const { return m_volume; }
    bool isMuted() const { return m_isMuted; }
    double videoAspectRatio() const { return m_videoAspectRatio; }
    bool isLiveStream() const { return m_isLiveStream; }
    bool isBuffering() const { return m_isBuffering; }
    const std::optional<YouTubeContent> &youtubeContent() const { return m_youtubeContent; }
    const QString &toastMessage() const { return m_toastMessage; }
    const QString &toastDetail() const { return m_toastDetail; }
    const std::optional<LastPlayableSource> &lastPlayableSource() const
    {
        return m_lastPlayableSource;
    }

    // Seams set up by the application.
    void setWebPlayerScripts(WebPlayerScripts *scripts) { m_webPlayerScripts = scripts; }
    void setFileChooser(FileChooser chooser) { m_fileChooser = std::move(chooser); }
    void setPlaylistDownloadLimits(const PlaylistDownloadLimits &limits) { m_limits = limits; }

    // Opening (in PlayerModel.cpp).
    void play(const QUrl &url, const std::optional<QString> &displayName, bool isLiveStream);
    // Plays a channel of the current playlist as a live stream, with the request headers the
    // playlist names for it; an address a playlist may not lead to is refused as invalid.
    void playChannel(const PlaylistEntry &entry);
    // The channel of the playlist playing now (the last one asked for while the item lasts).
    const std::optional<PlaylistEntry> &playingChannel() const { return m_playingChannel; }
    // A channel whose address answered with a channel list of its own opened it in place of
    // the list it came from, which "Back" brings again (one level).
    bool canGoBack() const { return m_previousPlaylist.has_value(); }
    void goBack();
    void openRemote(const QString &text, const std::optional<QString> &displayName);
    void importLocalM3U(const std::optional<QString> &displayName);
    void openFile();
    void clearNetworkStream();
    void discardLastRemoteSource();
    void replayLastSourceOrShowToast();
    void updateStreamTitle(const QString &text);
    // The embedded web player could not make the service's player: says so while web content
    // is shown.
    void showWebPlayerUnavailable();

    // Transport, observation and notices (in PlayerModelTransport.cpp).
    void togglePlayback();
    void skip(double seconds);
    // Seeks exactly to seconds into the item (the position slider).
    void seek(double seconds);
    void setVolume(double value);
    // Moves the volume by a fraction of the full volume, within 0 and 1.
    void changeVolume(double by);
    void toggleMute();
    void stop();
    // A new notice replaces the one shown, detail included.
    void showToast(const QString &text, const QString &detail = {});
    // Installs the key-down and mouse-moved monitor once; later calls do nothing.
    void installKeyboardShortcuts();

    // Tracks (in PlayerModelTracks.cpp).
    // The current item's audio and subtitle tracks; none for web content.
    MediaTracks tracks() const;
    bool subtitlesVisible() const { return m_subtitlesVisible; }
    // A picture from the media player is current (not sound alone, not web content): subtitle
    // files can be added to it.
    bool hasVideoItem() const;
    // Selects a track (nothing: subtitles off) and says so in a notice.
    void selectTrack(TrackKind kind, std::optional<qint64> id);
    void cycleTrack(TrackKind kind);
    void toggleSubtitlesVisible();
    // Asks for a subtitle file and adds it to the playing video.
    void loadSubtitleFile();
    void addSubtitleFile(const QString &path);

    // Programme guides (in PlayerModelGuide.cpp).
    // The programmes of the playlist's channels; empty until a guide has loaded, never null.
    const std::shared_ptr<const ProgrammeGuide> &programmeGuide() const { return m_guide; }
    // Now and next on the playing channel at this moment (seconds since the epoch).
    ProgrammeGuide::NowNext playingProgrammes(qint64 moment) const;
    // Adds a guide (a file or an http/https address) to those of the playlist, now and for the
    // playlists opened later in this session.
    void openGuide(const QString &text);
    // Asks for a guide file with the open panel; nothing if cancelled.
    std::optional<QString> chooseGuideFile() const;
    const QList<QUrl> &openedGuides() const { return m_openedGuides; }
    // Catch-up (in PlayerModelArchive.cpp).
    // Plays a programme of a channel of the playlist from the provider's archive: the title
    // reads "Channel — Programme", the position runs through the programme. False, with a
    // notice, when the channel's archive does not hold it.
    bool playArchive(const PlaylistEntry &entry, const ProgrammeGuide::Programme &programme);
    // A programme of the playing channel plays from its archive.
    bool isPlayingArchive() const { return m_archive.has_value(); }
    // The programme playing from the archive, if one is.
    std::optional<ProgrammeGuide::Programme> archiveProgramme() const;
    // From the archive back to the channel live.
    void backToLive();
    // Where the entry stands in the playlist (for the guide); -1 when it is not in it.
    qsizetype playlistPosition(const PlaylistEntry &entry) const;

    // Shorter waits and smaller limits for tests.
    void setGuideLimits(const GuideLoader::Limits &limits) { m_guideLoader->setLimits(limits); }
    // The guides of the current playlist are loading.
    bool isLoadingGuides() const { return m_loadingGuides; }

Q_SIGNALS:
    void titleChanged();
    // Something new was asked to play: a file, a stream, a channel, web content.
    void itemRequested();
    void errorMessageChanged();
    void isLoadingChanged();
    void playlistChanged();
    void isPlayingChanged();
    void currentTimeChanged();
    // The player was sent to seconds into the item: a skip, a seek, from any source.
    void seeked(double seconds);
    void durationChanged();
    void volumeChanged();
    // The keys for full screen were pressed; the window decides.
    void fullScreenToggleRequested();
    void fullScreenLeaveRequested();
    // The next (+1) or previous (-1) channel was asked for; the channel list decides which.
    void channelStepRequested(int step);
    void isMutedChanged();
    void videoAspectRatioChanged();
    void isLiveStreamChanged();
    void isBufferingChanged();
    void youtubeContentChanged();
    void toastMessageChanged();
    void tracksChanged();
    void subtitlesVisibleChanged();
    // The channel playing changed (or none plays any more).
    void playingChannelChanged();
    // A guide loaded (or was dropped with its playlist): rows are measured and drawn again.
    void programmeGuideChanged();
    // A programme began or ended somewhere in the guide: what is on now changed.
    void programmesChanged();
    // Archive playback began or ended.
    void archiveChanged();

private:
    template<typename T>
    void publish(T &field, const T &value, void (PlayerModel::*changed)())
    {
        if (field == value)
            return;
        field = value;
        Q_EMIT(this->*changed)();
    }

    void setTitle(const QString &title) { publish(m_title, title, &PlayerModel::titleChanged); }
    void setErrorMessage(const QString &text)
    {
        publish(m_errorMessage, text, &PlayerModel::errorMessageChanged);
    }
    void setIsLoading(bool loading)
    {
        publish(m_isLoading, loading, &PlayerModel::isLoadingChanged);
    }
    void setIsPlaying(bool playing)
    {
        publish(m_isPlaying, playing, &PlayerModel::isPlayingChanged);
    }
    void setCurrentTime(double seconds)
    {
        publish(m_currentTime, seconds, &PlayerModel::currentTimeChanged);
    }
    void setDuration(double seconds)
    {
        publish(m_duration, seconds, &PlayerModel::durationChanged);
    }
    void setIsMuted(bool muted) { publish(m_isMuted, muted, &PlayerModel::isMutedChanged); }
    void setVideoAspectRatio(double ratio)
    {
        publish(m_videoAspectRatio, ratio, &PlayerModel::videoAspectRatioChanged);
    }
    void setIsLiveStream(bool live)
    {
        publish(m_isLiveStream, live, &PlayerModel::isLiveStreamChanged);
    }
    void setIsBuffering(bool buffering)
    {
        publish(m_isBuffering, buffering, &PlayerModel::isBufferingChanged);
    }
    void setYouTubeContent(const std::optional<YouTubeContent> &content)
    {
        publish(m_youtubeContent, content, &PlayerModel::youtubeContentChanged);
    }
    void setToastMessage(const QString &text)
    {
        publish(m_toastMessage, text, &PlayerModel::toastMessageChanged);
    }

    void showYouTubeContent(const YouTubeContent &content, const std::optional<QString> &title);
    void loadM3U(const QUrl &url, const std::optional<QString> &displayName, QUuid requestID);
    // "Could not open playlist: " and why.
    static QString playlistFailure(const QString &error);
    // A downloaded list is still wanted (no newer choice came) and was read; a failure is
    // told as the error.
    bool isPublishable(const PlaylistLoadResult &result, QUuid requestID);
    // The channel playing answered with a channel list: it opens as the list.
    void openChannelList(const QUrl &url);
    // The list "Back" leads to is let go (freed on the loader's thread).
    void dropPreviousPlaylist();
    void publishPlaylist(const PlaylistLoadResult &result,
                         const std::optional<QString> &displayName, bool fromLocalFile);
    // Replaces the playlist; the old one is freed on the loader's thread once the views have
    // let go of it.
    void replacePlaylist(std::shared_ptr<const ChannelIndex> index);
    // A channel's address may answer with a channel list, which then opens as the list.
    void startPlaying(const QUrl &url, const std::optional<QString> &displayName, bool isLiveStream,
                      const StreamHeaders &headers, bool isChannel);
    // Abandons the remote download under way, if any: a newer choice replaced it.
    void cancelRemoteLoad();

    void observeTime();
    void refreshBufferingState();
    void showBufferingIndicatorAfterDelay();
    void hideBufferingIndicator();
    void handlePlaybackFailure(const QString &reason);
    void evaluateInWebPlayer(const QString &script);
    void connectTracks();

    // Live items (in PlayerModelLive.cpp).
    void connectLiveWatch();
    bool isWatchingLiveItem() const;
    void watchLiveProgress();
    // The live item stopped or stood still: the next try is planned, or with none left the
    // item ends in a notice saying why (reason, when known).
    void liveItemBrokeOff(const QString &reason);
    void tryReconnect();
    void endLiveRecovery();
    // A new item, or none: nothing is known of its progress.
    void forgetLiveItem();
    // Loads the playlist's guides and the opened ones for the current playlist; the guide shown
    // is dropped first unless keepShown.
    void loadGuides(bool keepShown = false);
    void publishGuide(const GuideLoader::Result &result);
    // Arms the one timer for the next moment a programme begins or ends.
    void scheduleProgrammeChange();
    void programmesReached();
    // Loads the archive for seconds into its programme (a source that starts where it is
    // asked); the position runs on from there.
    void loadArchiveAt(double seconds);
    // Seeks within the programme playing from the archive, clamped to it.
    void seekArchive(double seconds);

    std::unique_ptr<MediaPlayer> m_player;
    QString m_title = noMediaTitle.toString();
    QString m_errorMessage;
    bool m_isLoading = false;
    std::shared_ptr<const ChannelIndex> m_channelIndex; // holds the playlist
    bool m_playlistIsLocal = false; // the playlist was imported from a file
    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    double m_volume = 1.0;
    bool m_isMuted = false;
    double m_videoAspectRatio = 0;
    bool m_isLiveStream = false;
    bool m_isBuffering = false;
    std::optional<YouTubeContent> m_youtubeContent;
    QString m_toastMessage;
    QString m_toastDetail;
    bool m_subtitlesVisible = true;

    QTimer m_timeObserver;
    bool m_observingItemBuffer = false; // the current item's buffer flags are observed
    QTimer m_bufferingIndicatorTask;
    QTimer m_toastTask;
    std::unique_ptr<PlayerInputMonitor> m_inputMonitor;
    QUuid m_remoteRequestID;
    std::optional<LastPlayableSource> m_lastPlayableSource;
    std::optional<PlaylistEntry> m_playingChannel;

    bool m_wantsToPlay = false; // the user asked the current item to play
    QTimer m_liveWatch;
    QTimer m_reconnectTask;
    int m_reconnectAttempt = 0; // the try under way or planned; 0 when none
    QString m_reconnectNotice; // the notice of the try under way, while it may be shown
    bool m_liveStarted = false; // the live item has moved since it was asked for
    double m_lastLivePosition = qQNaN();
    qint64 m_lastLiveProgressMs = 0;
    QElapsedTimer m_liveClock;

    std::unique_ptr<PlaylistLoader> m_loader;
    PlaylistDownloadLimits m_limits;
    std::unique_ptr<GuideLoader> m_guideLoader;
    std::shared_ptr<const ProgrammeGuide> m_guide;
    PlaylistHeader m_playlistHeader;
    struct PreviousPlaylist
    {
        std::shared_ptr<const ChannelIndex> index;
        PlaylistHeader header;
        bool isLocal = false;
    };
    std::optional<PreviousPlaylist> m_previousPlaylist;
    QList<QUrl> m_openedGuides;
    bool m_loadingGuides = false;
    qint64 m_guideMoment = 0; // what the guide's kept programmes lie around
    qint64 m_nextProgrammeChange = 0; // what m_guideChangeTask waits for
    QTimer m_guideChangeTask;
    WebPlayerScripts *m_webPlayerScripts = nullptr;
    FileChooser m_fileChooser;

    struct ArchivePlayback
    {
        PlaylistEntry entry;
        ProgrammeGuide::Programme programme;
        qint32 shiftSeconds = 0;
        // The source holds the whole programme, or begins where it was asked to.
        int reach = 0; // a CatchupAddress::Reach
        double loadedFrom = 0; // seconds into the programme the loaded source begins at
    };
    std::optional<ArchivePlayback> m_archive;
};
