#pragma once
// Where the portrait window and the picture go in the player area for each display mode. Pure
// arithmetic: sizes in, rectangles out. Rectangles of the picture are in the portrait window's
// own coordinates; x grows to the right and y downwards.
#include "portraitdisplaymode.h"

#include <QRectF>

namespace DisplayGeometry {

// The portrait modes that pan and fill enlarge the picture by this much about its centre.
inline constexpr double zoomFactor = 1.13;
// The quarter turn of the rotate mode, in radians; negative turns clockwise on screen.
inline constexpr double rotateAngle = -1.5707963267948966;
// Dragging across this share of the view's width moves the pan by one whole unit.
inline constexpr double dragShareForFullPan = 0.35;

// The portrait window in view coordinates: the view's bounds in normal mode, otherwise 9/16 of
// the height wide, centred and never clamped (wider than a narrow view, whose edges clip it).
QRectF cropRect(PortraitDisplayMode mode, QSizeF viewSize);

// The picture before zoom, in crop coordinates. presentationSize is the video's display size,
// empty or zero while unknown. pan runs from -1 (right edge shown) to +1 (left edge shown).
QRectF videoRect(PortraitDisplayMode mode, QSizeF cropSize, QSizeF presentationSize, double pan);

// rect enlarged about its centre by the zoom factor.
QRectF zoomed(QRectF rect);

// Everything needed to place the picture: the crop in view coordinates, whether it clips, and
// the picture's own size, centre (crop coordinates) and turn. The picture is drawn filling its
// own size (aspect-fill), then turned about its centre.
struct PlayerLayerFrame
{
    QRectF crop;
    bool masksToBounds = false;
    QSizeF bounds;
    QPointF position;
    double rotation = 0;

    // The picture's rectangle in crop coordinates, before any turn.
    QRectF frame() const
    {
        return {position.x() - bounds.width() * 0.5, position.y() - bounds.height() * 0.5,
                bounds.width(), bounds.height()};
    }
    bool operator==(const PlayerLayerFrame &) const = default;
};

PlayerLayerFrame layout(PortraitDisplayMode mode, QSizeF viewSize, QSizeF presentationSize,
                        double pan);

// The pan after dragging dx points from where the drag started at startPan, in a view
// viewWidth wide; always within -1...+1.
double draggedPan(double startPan, double dx, double viewWidth);

} // namespace DisplayGeometry
