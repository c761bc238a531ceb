#include "mpvplayer.h"

#include "expandedplaylist.h"
#include "freedmemory.h"
#include "mpvfileoptions.h"
#include "mpvnames.h"
#include "mpvnode.h"
#include "mpvtracks.h"
#include "playbackfailure.h"

#include <QByteArray>
#include <QMetaObject>
#include <clocale>
#include <cmath>
#include <mpv/client.h>
#include <utility>

using namespace MpvNames;

struct MpvPlayer::ObservedProperty
{
    const char *name;
    mpv_format format;
};

const MpvPlayer::ObservedProperty MpvPlayer::s_observed[] = {
    {Property::pause, MPV_FORMAT_FLAG},         {Property::timePos, MPV_FORMAT_DOUBLE},
    {Property::duration, MPV_FORMAT_DOUBLE},    {Property::pausedForCache, MPV_FORMAT_FLAG},
    {Property::displayWidth, MPV_FORMAT_INT64}, {Property::displayHeight, MPV_FORMAT_INT64},
    {Property::fileFormat, MPV_FORMAT_STRING},  {Property::seekable, MPV_FORMAT_FLAG},
    {Property::rotation, MPV_FORMAT_INT64},     {Property::eofReached, MPV_FORMAT_FLAG},
    {Property::trackList, MPV_FORMAT_NODE},     {Property::subtitleText, MPV_FORMAT_STRING},
};

void MpvPlayer::HandleDeleter::operator()(mpv_handle *handle) const
{
    mpv_terminate_destroy(handle);
}

MpvPlayer::MpvPlayer(VideoOutput output, QObject *parent)
    : MediaPlayer(parent)
{
    // libmpv parses numbers with the C library and refuses to start under another LC_NUMERIC.
    std::setlocale(LC_NUMERIC, "C");
    m_handle.reset(mpv_create());
    if (!m_handle)
        qFatal("mpv_create failed: out of memory");
    mpv_handle *mpv = m_handle.get();

    const std::pair<const char *, const char *> options[] = {
        {Option::videoOutput, output == VideoOutput::renderContext ? "libmpv" : "null"},
        // Stay alive without a file, and keep the last frame at the end of a file instead of
        // unloading it: the item stays current and paused, as users expect of a player.
        {Option::idle, "yes"},
        {Option::keepOpen, "yes"},
        // Nothing from the user's mpv set-up, terminal or key bindings leaks into the app.
        {Option::config, "no"},
        {Option::terminal, "no"},
        {Option::inputDefaultBindings, "no"},
        {Option::inputVoKeyboard, "no"},
        {Option::osc, "no"},
        // Video-service pages play in the embedded web player, never through youtube-dl.
        {Option::youtubeDl, "no"},
        // The GPU decodes where mpv knows its interop to be reliable (VA-API, NVDEC,
        // VideoToolbox), the CPU elsewhere. Recording and smart reframe read what was drawn, so
        // they work the same either way.
        {Option::hardwareDecoding, "auto-safe"},
        // The picture fills whatever area a view has it drawn into, cropping what overflows
        // (aspect-fill); the views choose that area for each display mode.
        {Option::panscan, "1"},
        // mpv 0.36 and later default to scalers that draw black or striped pictures on software
        // OpenGL (llvmpipe, in virtual machines and without a GPU driver); bilinear, 0.35's
        // default, draws correctly on every OpenGL the player meets.
        {Option::scale, "bilinear"},
        {Option::downscale, "bilinear"},
        // The desktop's sound mixer lists the stream by client and by mpv's window title, which
        // would otherwise read "movie.mkv - mpv".
        {Option::audioClientName, "LumoMediaPlayer"},
        {Option::title, "LumoMediaPlayer"},
        // The view renders on the interface thread: mpv must hand over a frame at once instead
        // of waiting up to 50 ms for the moment to show it (mpv's advice for such embedders).
        {Option::videoTimingOffset, "0"},
        // A playlist mpv expands by itself never leads to files or special protocols.
        {Option::loadUnsafePlaylists, "no"},
        // Network choices:
        // - a server that says nothing for 10 s is given up (mpv's default is 60), so that a
        //   dead channel ends in a notice instead of a spinner; the item's own options say how
        //   its connection is kept (MpvFileOptions);
        // - a stream that stalls pauses for the cache (paused-for-cache, shown as buffering
        //   for live streams) and resumes once 1 s is buffered, rather than stuttering.
        {Option::networkTimeout, "10"},
        {Option::cachePause, "yes"},
        {Option::cachePauseWait, "1"},
        // A subtitle file named as the video beside it is loaded with it; one not in UTF-8
        // (Latin-1, Windows-1251) is recognised by its bytes.
        {Option::subtitleAutoLoad, "exact"},
        {Option::subtitleCodepage, "auto"},
    };
    for (const auto &[name, value] : options)
        mpv_set_option_string(mpv, name, value);

    if (mpv_initialize(mpv) < 0)
        qFatal("mpv_initialize failed");

    for (const ObservedProperty &property : s_observed)
        mpv_observe_property(mpv, 0, property.name, property.format);
    // Every file mpv is about to open is checked to be one this player loaded.
    mpv_hook_add(mpv, 0, Hook::load, 0);
    // Warnings and errors tell the user why an item failed: a missing file, an HTTP status.
    mpv_request_log_messages(mpv, "warn");

    // Called on mpv's threads: it may only queue the drain on the main thread.
    mpv_set_wakeup_callback(
        mpv,
        [](void *context) {
            QMetaObject::invokeMethod(static_cast<MpvPlayer *>(context), &MpvPlayer::drainEvents,
                                      Qt::QueuedConnection);
        },
        this);
}

MpvPlayer::~MpvPlayer()
{
    mpv_set_wakeup_callback(m_handle.get(), nullptr, nullptr);
    Q_EMIT aboutToDestroyHandle();
}

bool MpvPlayer::command(const QVariantMap &arguments, quint64 replyTo)
{
    // Named arguments keep their meaning when mpv adds positional ones (0.38 put an index before
    // loadfile's options), and their values need no quoting. mpv copies the node before
    // returning.
    MpvNode node(arguments);
    return mpv_command_node_async(m_handle.get(), replyTo, node.get()) >= 0;
}

namespace {

QString argument(const char *name)
{
    return QLatin1StringView(name);
}

} // namespace

void MpvPlayer::replaceCurrentItem(const std::optional<QUrl> &url, const StreamHeaders &headers)
{
    m_expansion.clear();
    m_reconnect = MpvFileOptions::Reconnect::afterCuts;
    if (url) {
        m_itemUrl = *url;
        m_headers = headers;
        m_itemIsLocal = url->isLocalFile();
        m_expansion.start(*url);
        setHasItem(true);
        if (!load(*url)) {
            // mpv refused the command as given: the item ends before it began.
            handleEnd(m_currentEntry, MPV_END_FILE_REASON_ERROR, -1, 0);
            // Told by the next drain, as every failure is.
            QMetaObject::invokeMethod(this, &MpvPlayer::drainEvents, Qt::QueuedConnection);
        }
    } else {
        forgetCurrentItem();
        m_awaitedLoad = 0;
        command({{argument(Command::name), QByteArray(Command::stop)}});
        setHasItem(false);
    }
    updateWaiting();
}

void MpvPlayer::forgetCurrentItem()
{
    m_failurePending = false;
    setTracks({});
    setSubtitleText({});
    setSoundOnly(std::nullopt);
    m_firstFrameShown = false;
    m_eofReached = false;
    m_position = qQNaN();
    m_duration.reset();
    m_currentEntry = -1;
    m_currentStarted = false;
    m_endsBeforeReply.clear();
}

bool MpvPlayer::load(const QUrl &url)
{
    forgetCurrentItem();
    m_itemMessages.clear();
    // A local file goes as a path so that mpv never reads a file: address through FFmpeg.
    const QByteArray target = url.isLocalFile() ? url.toLocalFile().toUtf8() : url.toEncoded();
    QVariantMap load {{argument(Command::name), QByteArray(Command::loadFile)},
                      {argument(Command::url), target},
                      {argument(Command::flags), QByteArray(Command::replace)}};
    if (!url.isLocalFile())
        load.insert(argument(Command::options), MpvFileOptions::network(m_headers, m_reconnect));
    m_awaitedLoad = ++m_lastReplyID;
    if (command(load, m_awaitedLoad))
        return true;
    m_awaitedLoad = 0;
    return false;
}

void MpvPlayer::reloadCurrentItem()
{
    if (!m_itemUrl.isValid())
        return;
    // The stream has played: network errors are worth retrying now.
    m_expansion.start(m_itemUrl);
    m_reconnect = MpvFileOptions::Reconnect::afterCutsAndNetworkErrors;
    setHasItem(true);
    if (!load(m_itemUrl)) {
        handleEnd(m_currentEntry, MPV_END_FILE_REASON_ERROR, -1, 0);
        QMetaObject::invokeMethod(this, &MpvPlayer::drainEvents, Qt::QueuedConnection);
    }
    updateWaiting();
}

bool MpvPlayer::loadNextEntry()
{
    while (const std::optional<QUrl> entry = m_expansion.next()) {
        if (load(*entry)) {
            updateWaiting();
            return true;
        }
    }
    return false;
}

void MpvPlayer::handleLoadHook(quint64 hookID)
{
    // mpv opens only what this player loaded. After an address turned out to be a playlist,
    // mpv goes on to its entries by itself, without the item's options and before the
    // player's own load of them arrives: such a start opens nothing.
    const bool own = m_awaitedLoad == 0 && m_startingEntry == m_currentEntry;
    if (!own)
        mpv_set_property_string(m_handle.get(), Property::streamOpenFilename, "null://");
    mpv_hook_continue(m_handle.get(), hookID);
}

void MpvPlayer::play()
{
    // A file that has played to its end plays again from the start; a live stream has no start
    // to go back to.
    if (m_eofReached && m_duration && !(m_isHls && !m_seekable)) {
        seekExactly(0);
        m_eofReached = false;
    }
    int flag = 0;
    mpv_set_property(m_handle.get(), Property::pause, MPV_FORMAT_FLAG, &flag);
    m_paused = false;
    updateWaiting();
}

void MpvPlayer::pause()
{
    int flag = 1;
    mpv_set_property(m_handle.get(), Property::pause, MPV_FORMAT_FLAG, &flag);
    m_paused = true;
    updateWaiting();
}

void MpvPlayer::seekExactly(double seconds)
{
    const QByteArray target = QByteArray::number(seconds, 'f', 6);
    m_position = seconds;
    command({{argument(Command::name), QByteArray(Command::seek)},
             {argument(Command::target), target},
             {argument(Command::flags), QByteArray(Command::seekAbsoluteExact)}});
}

void MpvPlayer::setVolume(double fraction)
{
    double percent = std::clamp(fraction, 0.0, 1.0) * 100.0;
    if (!std::isfinite(percent))
        percent = 0;
    mpv_set_property(m_handle.get(), Property::volume, MPV_FORMAT_DOUBLE, &percent);
}

void MpvPlayer::setMuted(bool muted)
{
    int flag = muted ? 1 : 0;
    mpv_set_property(m_handle.get(), Property::mute, MPV_FORMAT_FLAG, &flag);
}

std::optional<double> MpvPlayer::duration() const
{
    // mpv estimates a length for live HLS from what it has buffered; a live stream has none.
    if (m_isHls && !m_seekable)
        return std::nullopt;
    return m_duration;
}

bool MpvPlayer::isWaitingToPlay() const
{
    return m_hasItem && !m_paused && (m_pausedForCache || !m_firstFrameShown);
}

void MpvPlayer::drainEvents()
{
    while (m_handle) {
        const mpv_event *event = mpv_wait_event(m_handle.get(), 0);
        if (event->event_id == MPV_EVENT_NONE)
            break;
        handleEvent(*event);
    }
    // mpv hands out its log messages after the events queued meanwhile, so the messages that
    // tell why an item failed come after its end: the failure is told once all are read.
    if (std::exchange(m_failurePending, false)) {
        // Once the item's lists named entries, what failed is all of them, not the last one.
        const QString listed = m_expansion.failureReason();
        const QUrl &loaded = m_expansion.current();
        const QString address
            = loaded.isLocalFile() ? loaded.toLocalFile() : QString::fromUtf8(loaded.toEncoded());
        Q_EMIT playbackFailed(
            listed.isEmpty() ? PlaybackFailure::reason(
                PlaybackFailure::ownMessages(m_itemMessages, address), !m_itemIsLocal)
                             : listed);
    }
}

void MpvPlayer::handleEvent(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE: {
        const auto *property = static_cast<const mpv_event_property *>(event.data);
        handleProperty(property->name, property->format, property->data);
        break;
    }
    case MPV_EVENT_COMMAND_REPLY:
        if (event.reply_userdata != 0 && event.reply_userdata == m_awaitedLoad)
            handleLoadReply(event);
        else
            handleSubtitleReply(event.reply_userdata, event.error);
        break;
    case MPV_EVENT_START_FILE: {
        const auto *start = static_cast<const mpv_event_start_file *>(event.data);
        m_startingEntry = start->playlist_entry_id;
        if (m_awaitedLoad == 0 && start->playlist_entry_id == m_currentEntry)
            m_currentStarted = true;
        break;
    }
    case MPV_EVENT_FILE_LOADED:
        if (isCurrentItemStarted()) {
            setSoundOnly(describeSoundOnly());
            chooseInitialTracks();
        }
        break;
    case MPV_EVENT_LOG_MESSAGE: {
        const auto *message = static_cast<const mpv_event_log_message *>(event.data);
        if (m_itemMessages.size() >= PlaybackFailure::keptMessages)
            m_itemMessages.removeFirst();
        m_itemMessages.append(QString::fromUtf8(message->text).trimmed());
        break;
    }
    case MPV_EVENT_HOOK:
        handleLoadHook(static_cast<const mpv_event_hook *>(event.data)->id);
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        // A restart of an earlier item says nothing about the current one.
        if (!isCurrentItemStarted())
            break;
        // Once an item plays, the one before it is gone: what its threads freed goes back to
        // the system. glibc keeps freed memory in the arenas of threads that have ended, and a
        // live channel reconnected every few seconds would grow by megabytes each time.
        if (!m_firstFrameShown)
            releaseFreedMemory();
        m_firstFrameShown = true;
        updateWaiting();
        if (qEnvironmentVariableIntValue("LUMO_DEBUG") == 1)
            qInfo("video decoder in use: %s", qPrintable(hardwareDecoder()));
        Q_EMIT playbackRestarted();
        break;
    case MPV_EVENT_END_FILE: {
        const auto *end = static_cast<const mpv_event_end_file *>(event.data);
        const EndedItem ended {end->playlist_entry_id, end->reason,
                               end->playlist_insert_num_entries > 0 ? end->playlist_insert_id
                                                                    : qint64(-1),
                               end->playlist_insert_num_entries};
        if (m_awaitedLoad != 0)
            m_endsBeforeReply.append(ended);
        else
            handleEnd(ended.entryID, ended.reason, ended.insertedID, ended.insertedCount);
        break;
    }
    default:
        break;
    }
}

void MpvPlayer::handleLoadReply(const mpv_event &event)
{
    m_awaitedLoad = 0;
    const QList<EndedItem> ends = std::exchange(m_endsBeforeReply, {});
    if (event.error < 0) {
        // mpv refused the load itself: the item ends before it began.
        handleEnd(m_currentEntry, MPV_END_FILE_REASON_ERROR, -1, 0);
        return;
    }
    const mpv_node &result = static_cast<const mpv_event_command *>(event.data)->result;
    if (result.format == MPV_FORMAT_NODE_MAP) {
        for (int i = 0; i < result.u.list->num; ++i) {
            const mpv_node &value = result.u.list->values[i];
            if (QByteArrayView(result.u.list->keys[i]) == "playlist_entry_id"
                && value.format == MPV_FORMAT_INT64)
                m_currentEntry = value.u.int64;
        }
    }
    for (const EndedItem &end : ends)
        handleEnd(end.entryID, end.reason, end.insertedID, end.insertedCount);
}

void MpvPlayer::handleEnd(qint64 entryID, int reason, qint64 insertedID, qint64 insertedCount)
{
    // The end of an item replaced by a newer one says nothing about the current item.
    if (entryID != m_currentEntry || !m_hasItem)
        return;
    // This player forgets an item before it stops it, so a stop of the current item comes from
    // mpv itself: newer releases refuse a list that leads back to one already opened that way.
    if (reason == MPV_END_FILE_REASON_STOP)
        reason = MPV_END_FILE_REASON_ERROR;
    if (reason == MPV_END_FILE_REASON_REDIRECT && insertedID >= 0) {
        // The address was a playlist (a radio link): its entries are loaded as the item was,
        // each in turn until one plays.
        mpv_node playlist {};
        bool channelList = false;
        if (mpv_get_property(m_handle.get(), Property::playlist, MPV_FORMAT_NODE, &playlist) >= 0) {
            // The item's own address is a channel list: the caller opens it as one.
            channelList = m_opensChannelLists && m_expansion.requests() == 1
                && ExpandedPlaylist::hasTitledEntries(playlist, insertedID, insertedCount);
            // Files only from a list that is itself a file of this computer.
            if (!channelList)
                m_expansion.expand(ExpandedPlaylist::insertedEntries(
                    playlist, insertedID, insertedCount, m_expansion.currentIsLocal()));
            mpv_free_node_contents(&playlist);
        }
        if (channelList) {
            const QUrl list = m_itemUrl;
            m_currentEntry = -1;
            m_currentStarted = false;
            setHasItem(false);
            updateWaiting();
            Q_EMIT channelListFound(list);
            return;
        }
        if (loadNextEntry())
            return;
        reason = MPV_END_FILE_REASON_ERROR;
    } else if (reason == MPV_END_FILE_REASON_ERROR && loadNextEntry()) {
        return;
    }
    m_currentEntry = -1;
    m_currentStarted = false;
    setHasItem(false);
    updateWaiting();
    if (reason == MPV_END_FILE_REASON_ERROR)
        m_failurePending = true;
}

void MpvPlayer::setSoundOnly(const std::optional<SoundDescription> &soundOnly)
{
    if (soundOnly != m_soundOnly) {
        m_soundOnly = soundOnly;
        Q_EMIT soundOnlyChanged();
    }
}

QString MpvPlayer::hardwareDecoder() const
{
    char *value = mpv_get_property_string(m_handle.get(), Property::hardwareDecoderInUse);
    // Unavailable without video; the CPU then decodes whatever there is.
    const QString decoder = value ? QString::fromUtf8(value) : QStringLiteral("no");
    mpv_free(value);
    return decoder.isEmpty() ? QStringLiteral("no") : decoder;
}

void MpvPlayer::handleProperty(const char *name, int format, void *data)
{
    const auto flag = [&] {
        return format == MPV_FORMAT_FLAG && *static_cast<int *>(data) != 0;
    };
    const auto number = [&] {
        return format == MPV_FORMAT_DOUBLE ? *static_cast<double *>(data) : qQNaN();
    };
    const auto integer = [&] {
        return format == MPV_FORMAT_INT64 ? *static_cast<qint64 *>(data) : qint64(0);
    };
    const QByteArrayView key(name);

    if (key == Property::pause) {
        m_paused = flag();
        updateWaiting();
    } else if (key == Property::timePos) {
        // Until the current item has started, the times are an earlier item's.
        if (isCurrentItemStarted())
            m_position = number();
    } else if (key == Property::duration) {
        if (!isCurrentItemStarted())
            return;
        const double seconds = number();
        m_duration = std::isfinite(seconds) ? std::optional(seconds) : std::nullopt;
    } else if (key == Property::pausedForCache) {
        const bool empty = flag();
        if (empty != m_pausedForCache) {
            m_pausedForCache = empty;
            Q_EMIT bufferEmptyChanged(empty);
            Q_EMIT likelyToKeepUpChanged(!empty);
            updateWaiting();
        }
    } else if (key == Property::fileFormat) {
        m_isHls = format == MPV_FORMAT_STRING
            && QByteArrayView(*static_cast<const char **>(data)) == "hls";
    } else if (key == Property::eofReached) {
        // With keep-open mpv stays on the last frame, paused or not: nothing plays there.
        const bool reached = flag() && isCurrentItemStarted();
        if (reached && !m_eofReached)
            Q_EMIT endReached();
        m_eofReached = reached;
    } else if (key == Property::seekable) {
        m_seekable = flag();
    } else if (key == Property::displayWidth) {
        m_displayWidth = integer();
        updatePresentationSize();
    } else if (key == Property::displayHeight) {
        m_displayHeight = integer();
        updatePresentationSize();
    } else if (key == Property::rotation) {
        m_rotation = integer();
        updatePresentationSize();
    } else if (key == Property::trackList) {
        // Until the current item has loaded, the tracks are an earlier item's.
        if (isCurrentItemStarted() && format == MPV_FORMAT_NODE)
            setTracks(MpvTracks::fromNode(*static_cast<const mpv_node *>(data)));
    } else if (key == Property::subtitleText) {
        setSubtitleText(format == MPV_FORMAT_STRING
                            ? QString::fromUtf8(*static_cast<const char **>(data))
                            : QString());
    }
}

void MpvPlayer::updatePresentationSize()
{
    // mpv draws a picture tagged as turned (a phone's upright clip) turned, so it is shown in
    // the other shape than it is stored in.
    const bool quarterTurn = m_rotation % 180 != 0;
    const QSize size = m_displayWidth > 0 && m_displayHeight > 0
        ? QSize(int(quarterTurn ? m_displayHeight : m_displayWidth),
                int(quarterTurn ? m_displayWidth : m_displayHeight))
        : QSize();
    if (size != m_presentationSize) {
        m_presentationSize = size;
        Q_EMIT presentationSizeChanged(size);
    }
}

void MpvPlayer::updateWaiting()
{
    const bool waiting = isWaitingToPlay();
    if (waiting != m_waiting) {
        m_waiting = waiting;
        Q_EMIT waitingToPlayChanged(waiting);
    }
}

void MpvPlayer::setHasItem(bool hasItem)
{
    if (hasItem != m_hasItem) {
        m_hasItem = hasItem;
        Q_EMIT hasItemChanged(hasItem);
    }
}
