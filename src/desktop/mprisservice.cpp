#include "mprisservice.h"

#include "model/playermodel.h"
#include "mprisadaptors.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <cmath>

namespace {
constexpr const char *playerInterface = "org.mpris.MediaPlayer2.Player";
} // namespace

MprisService::MprisService(PlayerModel &model, WindowActions actions, QDBusConnection bus,
                           QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_actions(std::move(actions))
    , m_bus(std::move(bus))
{
    new MprisRootAdaptor(this);
    new MprisPlayerAdaptor(this);
    m_registered = m_bus.isConnected()
        && m_bus.registerObject(QString::fromLatin1(objectPath), this,
                                QDBusConnection::ExportAdaptors)
        && m_bus.registerService(QString::fromLatin1(serviceName));
    for (const auto change : {&PlayerModel::isPlayingChanged, &PlayerModel::durationChanged,
                              &PlayerModel::volumeChanged, &PlayerModel::isLiveStreamChanged,
                              &PlayerModel::youtubeContentChanged})
        connect(&model, change, this, &MprisService::announcePlayer);
    // An item may end (in error, while paused) without any of the above changing.
    connect(&model.player(), &MediaPlayer::hasItemChanged, this, &MprisService::announcePlayer);
    connect(&model, &PlayerModel::titleChanged, this, [this] {
        ++m_track;
        announcePlayer();
    });
    announcePlayer();
}

MprisService::~MprisService()
{
    if (m_registered) {
        m_bus.unregisterService(QString::fromLatin1(serviceName));
        m_bus.unregisterObject(QString::fromLatin1(objectPath));
    }
}

bool MprisService::canPlay() const
{
    return m_model.player().hasItem() || m_model.youtubeContent().has_value();
}

bool MprisService::canSeek() const
{
    return canPlay() && !m_model.isLiveStream() && m_model.duration() > 0;
}

QString MprisService::playbackStatus() const
{
    if (m_model.isPlaying())
        return QStringLiteral("Playing");
    return canPlay() ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

QVariantMap MprisService::metadata() const
{
    if (!canPlay())
        return {{QStringLiteral("mpris:trackid"),
                 QVariant::fromValue(QDBusObjectPath(
                     QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack")))}};
    QVariantMap values {
        {QStringLiteral("mpris:trackid"),
         QVariant::fromValue(
             QDBusObjectPath(QStringLiteral("/org/mpris/MediaPlayer2/Track/%1").arg(m_track)))},
        {QStringLiteral("xesam:title"), m_model.title()},
    };
    // A live stream has no length.
    if (!m_model.isLiveStream() && m_model.duration() > 0)
        values.insert(QStringLiteral("mpris:length"),
                      qlonglong(std::llround(m_model.duration() * 1e6)));
    return values;
}

qint64 MprisService::positionMicroseconds() const
{
    return std::llround(m_model.currentTime() * 1e6);
}

void MprisService::announcePlayer()
{
    const QVariantMap now {
        {QStringLiteral("PlaybackStatus"), playbackStatus()},
        {QStringLiteral("Metadata"), metadata()},
        {QStringLiteral("Volume"), m_model.volume()},
        {QStringLiteral("CanPlay"), canPlay()},
        {QStringLiteral("CanPause"), canPlay()},
        {QStringLiteral("CanSeek"), canSeek()},
    };
    QVariantMap changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (m_announced.value(it.key()) != it.value())
            changed.insert(it.key(), it.value());
    }
    m_announced = now;
    if (!changed.isEmpty())
        announce(playerInterface, changed);
}

void MprisService::announce(const char *interface, const QVariantMap &changed)
{
    if (!m_registered)
        return;
    QDBusMessage signal = QDBusMessage::createSignal(
        QString::fromLatin1(objectPath), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"));
    signal << QString::fromLatin1(interface) << changed << QStringList();
    m_bus.send(signal);
}

void MprisService::refuseCurrentCall(const QString &message) const
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::NotSupported, message);
}
