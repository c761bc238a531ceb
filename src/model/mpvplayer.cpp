#include "mpvplayer.h"

#include "mpvnames.h"

#include <QByteArray>
#include <QMetaObject>
#include <clocale>
#include <cmath>
#include <mpv/client.h>

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
        {Option::hardwareDecoding, "no"},
        // The picture fills whatever area a view has it drawn into, cropping what overflows
        // (aspect-fill); the views choose that area for each display mode.
        {Option::panscan, "1"},
        {Option::audioClientName, "LumoMediaPlayer"},
        // Network choices:
        // - a server that stops sending is given up after 20 s (mpv's default is 60), the same
        //   patience as for playlists, so a dead stream ends with a notice instead of waiting;
        // - plain HTTP and MPEG-TS live streams reconnect after a dropped connection or network
        //   error, waiting at most 5 s between tries, instead of ending at the first hiccup.
        //   HLS reloads its index and fetches segments through FFmpeg's HLS demuxer, which
        //   already retries the index and skips a segment it cannot get;
        // - a stream that stalls pauses for the cache (paused-for-cache, shown as buffering
        //   for live streams) and resumes once 1 s is buffered, rather than stuttering.
        {Option::networkTimeout, "20"},
        {Option::streamLavfOptions,
         "reconnect=1,reconnect_streamed=1,reconnect_on_network_error=1,reconnect_delay_max=5"},
        {Option::cachePause, "yes"},
        {Option::cachePauseWait, "1"},
    };
    for (const auto &[name, value] : options)
        mpv_set_option_string(mpv, name, value);

    if (mpv_initialize(mpv) < 0)
        qFatal("mpv_initialize failed");

    for (const ObservedProperty &property : s_observed)
        mpv_observe_property(mpv, 0, property.name, property.format);

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

void MpvPlayer::command(std::initializer_list<const char *> args)
{
    std::vector<const char *> list(args);
    list.push_back(nullptr);
    mpv_command_async(m_handle.get(), 0, list.data());
}

void MpvPlayer::replaceCurrentItem(const std::optional<QUrl> &url)
{
    m_firstFrameShown = false;
    m_position = qQNaN();
    m_duration.reset();
    if (url) {
        // A local file goes as a path so that mpv never reads a file: address through FFmpeg.
        const QByteArray target
            = url->isLocalFile() ? url->toLocalFile().toUtf8() : url->toEncoded();
        ++m_pendingStarts;
        command({Command::loadFile, target.constData()});
        setHasItem(true);
    } else {
        command({Command::stop});
        setHasItem(false);
    }
    updateWaiting();
}

void MpvPlayer::play()
{
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
    command({Command::seek, target.constData(), Command::seekAbsoluteExact});
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
}

void MpvPlayer::handleEvent(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE: {
        const auto *property = static_cast<const mpv_event_property *>(event.data);
        handleProperty(property->name, property->format, property->data);
        break;
    }
    case MPV_EVENT_START_FILE:
        if (m_pendingStarts > 0)
            --m_pendingStarts;
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        m_firstFrameShown = true;
        updateWaiting();
        Q_EMIT playbackRestarted();
        break;
    case MPV_EVENT_END_FILE: {
        const auto *end = static_cast<const mpv_event_end_file *>(event.data);
        // The end of an item replaced by a newer one says nothing about the current item.
        if (m_pendingStarts > 0)
            break;
        setHasItem(false);
        updateWaiting();
        if (end->reason == MPV_END_FILE_REASON_ERROR)
            Q_EMIT playbackFailed(QString::fromUtf8(mpv_error_string(end->error)));
        break;
    }
    default:
        break;
    }
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
        m_position = number();
    } else if (key == Property::duration) {
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
    } else if (key == Property::seekable) {
        m_seekable = flag();
    } else if (key == Property::displayWidth || key == Property::displayHeight) {
        (key == Property::displayWidth ? m_displayWidth : m_displayHeight) = integer();
        const QSize size = m_displayWidth > 0 && m_displayHeight > 0
            ? QSize(int(m_displayWidth), int(m_displayHeight))
            : QSize();
        if (size != m_presentationSize) {
            m_presentationSize = size;
            Q_EMIT presentationSizeChanged(size);
        }
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
