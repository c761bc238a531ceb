#include "screensaverinhibitor.h"

#include "model/playermodel.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>

namespace {
QDBusMessage screenSaverCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QString::fromLatin1(ScreenSaverInhibitor::service),
                                          QString::fromLatin1(ScreenSaverInhibitor::path),
                                          QStringLiteral("org.freedesktop.ScreenSaver"), method);
}
} // namespace

ScreenSaverInhibitor::ScreenSaverInhibitor(PlayerModel &model, QDBusConnection bus, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_bus(std::move(bus))
{
    connect(&model, &PlayerModel::isPlayingChanged, this, &ScreenSaverInhibitor::update);
    connect(&model, &PlayerModel::videoAspectRatioChanged, this, &ScreenSaverInhibitor::update);
    connect(&model, &PlayerModel::youtubeContentChanged, this, &ScreenSaverInhibitor::update);
    update();
}

ScreenSaverInhibitor::~ScreenSaverInhibitor()
{
    if (m_cookie)
        uninhibit(*m_cookie);
}

void ScreenSaverInhibitor::update()
{
    // A web video's picture is there as soon as it is shown; a file's once mpv knows its size.
    const bool hasPicture = m_model.youtubeContent() || m_model.videoAspectRatio() > 0;
    const bool wanted = shouldInhibit(m_model.isPlaying(), hasPicture);
    if (wanted == m_wanted)
        return;
    m_wanted = wanted;
    if (!wanted) {
        if (m_cookie)
            uninhibit(*m_cookie);
        m_cookie.reset();
        return;
    }
    QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"));
    call << QStringLiteral("LumoMediaPlayerPro") << QStringLiteral("Playing a video");
    // The answer may come after this object is gone; it is let go then too.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call));
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
            [self = QPointer(this), bus = m_bus](QDBusPendingCallWatcher *finished) mutable {
                finished->deleteLater();
                const QDBusPendingReply<uint> reply = *finished;
                if (reply.isError())
                    return; // no screen saver service on this desktop
                // Paused again, or gone, before the answer came: let go at once.
                if (self && self->m_wanted && !self->m_cookie) {
                    self->m_cookie = reply.value();
                    return;
                }
                QDBusMessage release = screenSaverCall(QStringLiteral("UnInhibit"));
                release << reply.value();
                bus.send(release);
            });
}

void ScreenSaverInhibitor::uninhibit(uint cookie)
{
    QDBusMessage call = screenSaverCall(QStringLiteral("UnInhibit"));
    call << cookie;
    m_bus.send(call);
}
