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
    m_surface = surface;
    m_view = surface ? surface->recordingView() : nullptr;
}

void PlayerSurfaceRegistry::clearIfHolding(const QWidget *view)
{
    if (m_view && m_view == view)
        setSurface(nullptr);
}
