#pragma once
// The process-wide holder of the surface a recording captures: the last player view shown.
// It never keeps the view alive; once the view is gone it holds nothing. It says when the
// surface changes, so that a recording follows the player from one view to the next.
#include <QObject>
#include <QPointer>
#include <QWidget>

class PlayerRecordingSurface;

class PlayerSurfaceRegistry final : public QObject
{
    Q_OBJECT

public:
    static PlayerSurfaceRegistry &shared();

    // The current surface, or null when none was registered or its view has gone.
    PlayerRecordingSurface *surface() const;
    void setSurface(PlayerRecordingSurface *surface);
    // A view being taken down forgets the registration only if it is still its own: a newer
    // registration by another view stays.
    void clearIfHolding(const QWidget *view);

Q_SIGNALS:
    // Another surface, or none, is to be recorded from now on.
    void surfaceChanged();

private:
    PlayerSurfaceRegistry() = default;

    QPointer<QWidget> m_view;
    PlayerRecordingSurface *m_surface = nullptr;
    QMetaObject::Connection m_viewGone;
};
