#include "mprisadaptors.h"

#include "model/playermodel.h"
#include "mprisservice.h"

#include <QUrl>
#include <algorithm>
#include <cmath>

MprisRootAdaptor::MprisRootAdaptor(MprisService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(service)
{ }

QString MprisRootAdaptor::identity() const
{
    return QStringLiteral("LumoMediaPlayerPro");
}

QString MprisRootAdaptor::desktopEntry() const
{
    return QStringLiteral("LumoMediaPlayer");
}

namespace {

const QString fileScheme = QStringLiteral("file");

// What OpenUri takes, and so what the desktop is told it may send.
const QStringList &uriSchemes()
{
    static const QStringList schemes {fileScheme, QStringLiteral("http"), QStringLiteral("https")};
    return schemes;
}

} // namespace

QStringList MprisRootAdaptor::supportedUriSchemes() const
{
    return uriSchemes();
}

QStringList MprisRootAdaptor::supportedMimeTypes() const
{
    return {QStringLiteral("video/mp4"),       QStringLiteral("video/x-matroska"),
            QStringLiteral("video/quicktime"), QStringLiteral("audio/mpeg"),
            QStringLiteral("audio/x-mpegurl"), QStringLiteral("application/vnd.apple.mpegurl")};
}

void MprisRootAdaptor::Raise()
{
    if (m_service->actions().raise)
        m_service->actions().raise();
}

void MprisRootAdaptor::Quit()
{
    if (m_service->actions().quit)
        m_service->actions().quit();
}

MprisPlayerAdaptor::MprisPlayerAdaptor(MprisService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(service)
{
    // Every seek is announced, whoever asked for it: keys, slider, or the bus.
    connect(&service->model(), &PlayerModel::seeked, this,
            [this](double seconds) { Q_EMIT Seeked(std::llround(seconds * 1e6)); });
}

QString MprisPlayerAdaptor::playbackStatus() const
{
    return m_service->playbackStatus();
}

QVariantMap MprisPlayerAdaptor::metadata() const
{
    return m_service->metadata();
}

double MprisPlayerAdaptor::volume() const
{
    return m_service->model().volume();
}

void MprisPlayerAdaptor::setVolume(double volume)
{
    // NaN would pass a clamp and reach the player as a volume.
    if (std::isfinite(volume))
        m_service->model().setVolume(std::clamp(volume, 0.0, 1.0));
}

qlonglong MprisPlayerAdaptor::position() const
{
    return m_service->positionMicroseconds();
}

bool MprisPlayerAdaptor::canPlay() const
{
    return m_service->canPlay();
}

bool MprisPlayerAdaptor::canSeek() const
{
    return m_service->canSeek();
}

void MprisPlayerAdaptor::Pause()
{
    if (m_service->model().isPlaying())
        m_service->model().togglePlayback();
}

void MprisPlayerAdaptor::PlayPause()
{
    if (m_service->canPlay())
        m_service->model().togglePlayback();
}

void MprisPlayerAdaptor::Stop()
{
    m_service->model().stop();
}

void MprisPlayerAdaptor::Play()
{
    if (m_service->canPlay() && !m_service->model().isPlaying())
        m_service->model().togglePlayback();
}

void MprisPlayerAdaptor::Seek(qlonglong offset)
{
    if (!m_service->canSeek())
        return;
    // Clamped to the item, as the player's own skips are; announced as every seek is.
    m_service->model().skip(double(offset) / 1e6);
}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath &track, qlonglong position)
{
    // A request for another track, or beyond the end, is ignored.
    const QVariant current = m_service->metadata().value(QStringLiteral("mpris:trackid"));
    if (!m_service->canSeek() || track != current.value<QDBusObjectPath>() || position < 0
        || double(position) / 1e6 > m_service->model().duration())
        return;
    PlayerModel &model = m_service->model();
    model.skip(double(position) / 1e6 - model.currentTime());
}

void MprisPlayerAdaptor::OpenUri(const QString &uri)
{
    // Any program on the session bus may call this: mpv must never see an address it would
    // read itself (edl://, av://lavfi: can load libraries into the player).
    const QUrl url(uri, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (url.isValid() && uriSchemes().contains(scheme)) {
        if (scheme != fileScheme) {
            m_service->model().openRemote(uri, std::nullopt);
            return;
        }
        if (url.isLocalFile() && url.host().isEmpty()) {
            // As a dropped file: named after the last part of its path, never live.
            m_service->model().play(url, url.fileName(), false);
            return;
        }
    }
    m_service->refuseCurrentCall(
        QStringLiteral("Only local files and http or https addresses are opened."));
}
