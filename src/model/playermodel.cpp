#include "playermodel.h"

#include "playerinputmonitor.h"
#include "playlistloader.h"

#include "sources/sourceaddress.h"
#include "sources/urlparts.h"
#include <QFileInfo>
#include <cmath>

namespace {
const QString importFailurePrefix = QStringLiteral("Could not import playlist: ");
} // namespace

QString PlayerModel::playlistFailure(const QString &error)
{
    return QStringLiteral("Could not open playlist: ") + error;
}

bool PlayerModel::isPublishable(const PlaylistLoadResult &result, QUuid requestID)
{
    if (m_remoteRequestID != requestID)
        return false;
    if (!result.error.isNull()) {
        setIsLoading(false);
        setErrorMessage(playlistFailure(result.error));
        return false;
    }
    return true;
}

PlayerModel::PlayerModel(std::unique_ptr<MediaPlayer> player, QObject *parent)
    : QObject(parent)
    , m_player(std::move(player))
    , m_channelIndex(std::make_shared<const ChannelIndex>())
    , m_loader(std::make_unique<PlaylistLoader>())
    , m_guideLoader(std::make_unique<GuideLoader>())
    , m_guide(std::make_shared<const ProgrammeGuide>())
{
    m_guideChangeTask.setSingleShot(true);
    // To the second: a programme line changes when the clock beside it does.
    m_guideChangeTask.setTimerType(Qt::PreciseTimer);
    connect(&m_guideChangeTask, &QTimer::timeout, this, &PlayerModel::programmesReached);

    m_player->setVolume(m_volume);

    m_timeObserver.setInterval(timeObserverIntervalMs);
    connect(&m_timeObserver, &QTimer::timeout, this, &PlayerModel::observeTime);
    m_timeObserver.start();

    // The player's waiting state stands for its time-control status; the two buffer flags are
    // observed only for the current item.
    connect(m_player.get(), &MediaPlayer::waitingToPlayChanged, this,
            &PlayerModel::refreshBufferingState);
    const auto itemBufferChanged = [this] {
        if (m_observingItemBuffer)
            refreshBufferingState();
    };
    connect(m_player.get(), &MediaPlayer::bufferEmptyChanged, this, itemBufferChanged);
    connect(m_player.get(), &MediaPlayer::likelyToKeepUpChanged, this, itemBufferChanged);
    connect(m_player.get(), &MediaPlayer::playbackFailed, this,
            &PlayerModel::handlePlaybackFailure);
    connect(m_player.get(), &MediaPlayer::channelListFound, this, &PlayerModel::openChannelList);

    m_bufferingIndicatorTask.setSingleShot(true);
    m_bufferingIndicatorTask.setInterval(bufferingIndicatorDelayMs);
    connect(&m_bufferingIndicatorTask, &QTimer::timeout, this, [this] {
        if (m_isLiveStream && m_player->hasItem() && m_player->isWaitingToPlay())
            setIsBuffering(true);
    });

    m_toastTask.setSingleShot(true);
    m_toastTask.setInterval(toastDurationMs);
    connect(&m_toastTask, &QTimer::timeout, this, [this] {
        m_toastDetail.clear();
        setToastMessage(QString());
    });

    connectTracks();
    connectLiveWatch();
    refreshBufferingState();
}

PlayerModel::~PlayerModel()
{
    // The loader goes first: its thread is joined, so no playlist arrives afterwards. Timers go
    // with their members.
    m_loader.reset();
    m_inputMonitor.reset();
}

void PlayerModel::play(const QUrl &url, const std::optional<QString> &displayName,
                       bool isLiveStream)
{
    startPlaying(url, displayName, isLiveStream, {}, false);
}

void PlayerModel::playChannel(const PlaylistEntry &entry)
{
    const QUrl url = entry.url();
    if (!SourceAddress::isPlayableChannelAddress(url, m_playlistIsLocal)) {
        setErrorMessage(SourceAddress::invalidAddressMessage.toString());
        return;
    }
    startPlaying(url, entry.name(), true, entry.headers(), true);
    m_playingChannel = entry;
    playingChannelChanged();
}

void PlayerModel::startPlaying(const QUrl &url, const std::optional<QString> &displayName,
                               bool isLiveStream, const StreamHeaders &headers, bool isChannel)
{
    Q_EMIT itemRequested();
    m_playingChannel.reset();
    playingChannelChanged();
    if (m_archive) {
        m_archive.reset();
        Q_EMIT archiveChanged();
    }
    forgetLiveItem();
    m_wantsToPlay = true;
    setYouTubeContent(std::nullopt);
    setErrorMessage(QString());
    QString title;
    if (displayName) {
        title = *displayName;
    } else {
        const std::optional<QString> decoded
            = UrlParts::removingPercentEncoding(UrlParts::lastPathComponent(url));
        title = decoded ? *decoded : QString::fromUtf8(UrlParts::encoded(url));
        // A server addressed by its root, as radio servers are ("http://radio:8000/"), has no
        // file name: its host names it.
        const QString host = url.host(QUrl::FullyDecoded);
        if ((title.isEmpty() || title == u"/") && !host.isEmpty())
            title = host;
    }
    setTitle(title);
    m_lastPlayableSource = LastPlayableMedia {url, title, isLiveStream};
    setIsLiveStream(isLiveStream);
    hideBufferingIndicator();
    setVideoAspectRatio(0);

    m_observingItemBuffer = true;
    m_player->setOpensChannelLists(isChannel);
    m_player->replaceCurrentItem(url, headers);
    m_player->play();
    setIsPlaying(true);
    refreshBufferingState();
}

void PlayerModel::openRemote(const QString &text, const std::optional<QString> &displayName)
{
    const QUuid requestID = QUuid::createUuid();
    m_remoteRequestID = requestID;

    const SourceAddress::Classification source = SourceAddress::classify(text);
    switch (source.kind) {
    case SourceAddress::SourceKind::invalid:
        cancelRemoteLoad();
        setErrorMessage(SourceAddress::invalidAddressMessage.toString());
        return;
    case SourceAddress::SourceKind::youtube:
        cancelRemoteLoad();
        showYouTubeContent(*source.youtubeContent, displayName);
        return;
    case SourceAddress::SourceKind::playlist:
        // The new download replaces the one under way.
        loadM3U(source.url, displayName, requestID);
        return;
    case SourceAddress::SourceKind::stream:
        cancelRemoteLoad();
        play(source.url, displayName, source.isLiveStream);
        return;
    }
}

void PlayerModel::cancelRemoteLoad()
{
    if (!m_isLoading)
        return;
    m_loader->cancel();
    setIsLoading(false);
}

void PlayerModel::showYouTubeContent(const YouTubeContent &content,
                                     const std::optional<QString> &title)
{
    Q_EMIT itemRequested();
    m_observingItemBuffer = false;
    m_player->replaceCurrentItem(std::nullopt);
    m_playingChannel.reset();
    playingChannelChanged();
    forgetLiveItem();
    m_wantsToPlay = false;
    setYouTubeContent(content);
    if (title)
        setTitle(*title);
    m_lastPlayableSource = LastPlayableYouTube {content, m_title};
    setIsLiveStream(false);
    hideBufferingIndicator();
    setCurrentTime(0);
    setDuration(0);
}

void PlayerModel::loadM3U(const QUrl &url, const std::optional<QString> &displayName,
                          QUuid requestID)
{
    setIsLoading(true);
    m_loader->load(url, m_limits, this,
                   [this, displayName, requestID](const PlaylistLoadResult &result) {
                       if (isPublishable(result, requestID))
                           publishPlaylist(result, displayName, false);
                   });
}

void PlayerModel::publishPlaylist(const PlaylistLoadResult &result,
                                  const std::optional<QString> &displayName, bool fromLocalFile)
{
    dropPreviousPlaylist();
    m_playlistIsLocal = fromLocalFile;
    // The loader builds the index; a result made without one is indexed here.
    replacePlaylist(result.index ? result.index
                                 : std::make_shared<const ChannelIndex>(result.entries));
    m_playlistHeader = result.header;
    loadGuides();
    setIsLoading(false);
    setErrorMessage(QString());
    setTitle(displayName ? *displayName : QStringLiteral("IPTV Playlist"));
}

const QList<PlaylistEntry> &PlayerModel::playlist() const
{
    return m_channelIndex->playlist();
}

void PlayerModel::replacePlaylist(std::shared_ptr<const ChannelIndex> index)
{
    std::shared_ptr<const ChannelIndex> old = std::exchange(m_channelIndex, std::move(index));
    Q_EMIT playlistChanged();
    m_loader->release(std::move(old));
}

void PlayerModel::importLocalM3U(const std::optional<QString> &displayName)
{
    if (!m_fileChooser)
        return;
    const std::optional<QString> path = m_fileChooser(OpenPanels::importPlaylist());
    if (!path)
        return;
    // Reading and parsing a large file happens off the main thread. The import is the newest
    // choice: a download under way is abandoned, and a remote open or a clear made meanwhile
    // is newer still, so the import then publishes nothing.
    const QUuid requestID = QUuid::createUuid();
    m_remoteRequestID = requestID;
    cancelRemoteLoad();
    m_loader->loadFile(*path, m_limits.maxBytes, this,
                       [this, displayName, requestID](const PlaylistLoadResult &result) {
                           if (m_remoteRequestID != requestID)
                               return;
                           if (!result.error.isNull()) {
                               setErrorMessage(importFailurePrefix + result.error);
                               return;
                           }
                           publishPlaylist(result, displayName, true);
                       });
}

void PlayerModel::openFile()
{
    if (!m_fileChooser)
        return;
    const std::optional<QString> path = m_fileChooser(OpenPanels::chooseMedia());
    if (!path)
        return;
    const QFileInfo file(*path);
    play(QUrl::fromLocalFile(file.absoluteFilePath()), file.fileName(), false);
}

void PlayerModel::clearNetworkStream()
{
    m_remoteRequestID = QUuid::createUuid();
    m_loader->cancel();
    dropPreviousPlaylist();
    if (!playlist().isEmpty())
        replacePlaylist(std::make_shared<const ChannelIndex>());
    m_playlistHeader = {};
    // The guides the user added go with the playlists: clearing forgets them too.
    m_openedGuides.clear();
    loadGuides();
    setErrorMessage(QString());
    setIsLoading(false);
    discardLastRemoteSource();
    stop();
}

void PlayerModel::discardLastRemoteSource()
{
    if (!m_lastPlayableSource)
        return;
    const auto *media = std::get_if<LastPlayableMedia>(&*m_lastPlayableSource);
    if (!media || !media->url.isLocalFile())
        m_lastPlayableSource.reset();
}

void PlayerModel::replayLastSourceOrShowToast()
{
    if (!m_lastPlayableSource) {
        showToast(
            QStringLiteral("No media or URL is available. Open a file or enter a stream URL."));
        return;
    }
    // Copied: playing records a new last source.
    const LastPlayableSource source = *m_lastPlayableSource;
    if (const auto *media = std::get_if<LastPlayableMedia>(&source))
        play(media->url, media->title, media->isLiveStream);
    else if (const auto *youtube = std::get_if<LastPlayableYouTube>(&source))
        showYouTubeContent(youtube->content, youtube->title);
}

void PlayerModel::updateStreamTitle(const QString &text)
{
    if (!m_isLiveStream)
        return;
    const QString trimmed = text.trimmed();
    setTitle(trimmed.isEmpty() ? applicationDisplayName.toString() : trimmed);
}

void PlayerModel::showWebPlayerUnavailable()
{
    if (m_youtubeContent)
        setErrorMessage(QStringLiteral("Could not load the YouTube player."));
}

void PlayerModel::handlePlaybackFailure(const QString &reason)
{
    // A live channel that had played is tried again before it is given up.
    if (isWatchingLiveItem() && m_liveStarted) {
        liveItemBrokeOff(reason);
        return;
    }
    m_wantsToPlay = false;
    // Media that cannot be opened has no text of its own: say which title failed, and why when
    // the player knows. Nothing of it stays behind: the window reads as if nothing is loaded.
    m_observingItemBuffer = false;
    hideBufferingIndicator();
    setIsPlaying(false);
    showToast(QStringLiteral("Could not play %1.").arg(m_title), reason);
    if (m_archive) {
        m_archive.reset();
        Q_EMIT archiveChanged();
    }
    setCurrentTime(0);
    setDuration(0);
    setTitle(noMediaTitle.toString());
}
