#pragma once
// Keeps the screen saver away while a video plays (not while paused, not for sound alone),
// through the freedesktop ScreenSaver service on the session bus. Calls never wait: a desktop
// without the service simply gets none.
#include <QDBusConnection>
#include <QObject>
#include <optional>

class PlayerModel;

class ScreenSaverInhibitor final : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *service = "org.freedesktop.ScreenSaver";
    static constexpr const char *path = "/org/freedesktop/ScreenSaver";

    // Whether the screen must stay on: a picture is moving.
    static bool shouldInhibit(bool isPlaying, bool hasPicture) { return isPlaying && hasPicture; }

    explicit ScreenSaverInhibitor(PlayerModel &model,
                                  QDBusConnection bus = QDBusConnection::sessionBus(),
                                  QObject *parent = nullptr);
    ~ScreenSaverInhibitor() override;

    // True from the moment the inhibition is asked for until it is let go.
    bool isInhibiting() const { return m_wanted; }

private:
    void update();
    void uninhibit(uint cookie);

    PlayerModel &m_model;
    QDBusConnection m_bus;
    bool m_wanted = false;
    // The service's cookie, once its answer came.
    std::optional<uint> m_cookie;
};
