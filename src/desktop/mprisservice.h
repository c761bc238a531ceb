#pragma once
// The player on the session bus as org.mpris.MediaPlayer2.LumoMediaPlayer: media keys, desktop
// sound menus and other remote controls drive the player model through it, and follow its
// state through PropertiesChanged.
#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QVariantMap>
#include <functional>

class PlayerModel;

// The bus object the adaptors are attached to, and so the one Qt gives the context of a call.
class MprisService final : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    static constexpr const char *serviceName = "org.mpris.MediaPlayer2.LumoMediaPlayer";
    static constexpr const char *objectPath = "/org/mpris/MediaPlayer2";

    struct WindowActions
    {
        std::function<void()> raise;
        std::function<void()> quit;
    };

    MprisService(PlayerModel &model, WindowActions actions,
                 QDBusConnection bus = QDBusConnection::sessionBus(), QObject *parent = nullptr);
    ~MprisService() override;

    // False when the bus or the name was not to be had; the player then runs without it.
    bool isRegistered() const { return m_registered; }

    PlayerModel &model() const { return m_model; }
    // Answers the method call being delivered with org.freedesktop.DBus.Error.NotSupported.
    void refuseCurrentCall(const QString &message) const;
    const WindowActions &actions() const { return m_actions; }

    // The Player interface's state, as the bus reads it.
    QString playbackStatus() const;
    QVariantMap metadata() const;
    qint64 positionMicroseconds() const;
    bool canPlay() const;
    bool canSeek() const;

private:
    void announce(const char *interface, const QVariantMap &changed);
    void announcePlayer();

    PlayerModel &m_model;
    WindowActions m_actions;
    QDBusConnection m_bus;
    bool m_registered = false;
    // Names the current item; a new title is a new track for the desktop.
    qint64 m_track = 1;
    QVariantMap m_announced;
};
