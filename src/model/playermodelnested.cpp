// PlayerModel's lists inside lists: a channel whose address answers with a channel list of its
// own (an index of country playlists) opens it as the channel list, and "Back" brings the list
// it came from again. One level is kept.
#include "playermodel.h"
#include "playlistloader.h"

void PlayerModel::openChannelList(const QUrl &url)
{
    // The item was a list, not a failure: it ends without a notice.
    const QString title = m_title;
    m_wantsToPlay = false;
    m_playingChannel.reset();
    playingChannelChanged();
    forgetLiveItem();
    hideBufferingIndicator();
    setIsPlaying(false);
    const QUuid requestID = QUuid::createUuid();
    m_remoteRequestID = requestID;
    cancelRemoteLoad();
    setIsLoading(true);
    const auto publish = [this, title, requestID, url](const PlaylistLoadResult &result) {
        if (!isPublishable(result, requestID))
            return;
        PreviousPlaylist previous {m_channelIndex, m_playlistHeader, m_playlistIsLocal};
        publishPlaylist(result, title, url.isLocalFile());
        m_previousPlaylist = std::move(previous);
        Q_EMIT playlistChanged();
    };
    if (url.isLocalFile())
        m_loader->loadFile(url.toLocalFile(), m_limits.maxBytes, this, publish);
    else
        m_loader->load(url, m_limits, this, publish);
}

void PlayerModel::goBack()
{
    if (!m_previousPlaylist)
        return;
    PreviousPlaylist previous = *std::exchange(m_previousPlaylist, std::nullopt);
    // A download of another list under way is abandoned: going back is the newer choice.
    m_remoteRequestID = QUuid::createUuid();
    cancelRemoteLoad();
    m_playlistIsLocal = previous.isLocal;
    m_playlistHeader = previous.header;
    replacePlaylist(std::move(previous.index));
    loadGuides();
    setErrorMessage(QString());
}

void PlayerModel::dropPreviousPlaylist()
{
    if (!m_previousPlaylist)
        return;
    std::shared_ptr<const ChannelIndex> index = std::move(m_previousPlaylist->index);
    m_previousPlaylist.reset();
    m_loader->release(std::move(index));
}
