#pragma once
// The two pointer notifications that cross subsystems, each carrying the window it happened in.
#include <QObject>
#include <QPointer>
#include <QWindow>

class PlayerNotifications final : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView playerSurfaceClickedName = u"LumoMediaPlayer.playerSurfaceClicked";
    static constexpr QStringView playerMouseMovedName = u"LumoMediaPlayer.playerMouseMoved";

    // The process-wide notifier; lives on the main thread.
    static PlayerNotifications &shared();

Q_SIGNALS:
    void playerSurfaceClicked(QWindow *window);
    void playerMouseMoved(QWindow *window);

private:
    PlayerNotifications() = default;
};
