#include "playersurfaceregistry.h"

#include "playerrecordingsurface.h"

PlayerSurfaceRegistry &PlayerSurfaceRegistry::shared()
{
    static PlayerSurfaceRegistry registry;
    return registry;
}

PlayerRecordingSurface *PlayerSurfaceRegistry::surface() const
{
    return m_view ? m_surface : nullptr;
}

void PlayerSurfaceRegistry::setSurface(PlayerRecordingSurface *surface)
{
    QWidget *view = surface ? surface->recordingView() : nullptr;
    if (surface == m_surface && view == m_view)
        return;
    disconnect(m_viewGone);
    m_surface = surface;
    m_view = view;
    if (view) {
        m_viewGone = connect(view, &QObject::destroyed, this, [this] {
            m_surface = nullptr;
            Q_EMIT surfaceChanged();
        });
    }
    Q_EMIT surfaceChanged();
}

void PlayerSurfaceRegistry::clearIfHolding(const QWidget *view)
{
    if (m_view && m_view == view)
        setSurface(nullptr);
}
