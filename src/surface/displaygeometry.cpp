#include "displaygeometry.h"

#include <algorithm>

namespace DisplayGeometry {

namespace {
bool isZoomed(PortraitDisplayMode mode)
{
    return mode == PortraitDisplayMode::fill || mode == PortraitDisplayMode::manual
        || mode == PortraitDisplayMode::smart;
}

bool isPanned(PortraitDisplayMode mode)
{
    return mode == PortraitDisplayMode::manual || mode == PortraitDisplayMode::smart;
}
} // namespace

QRectF cropRect(PortraitDisplayMode mode, QSizeF viewSize)
{
    const double viewWidth = viewSize.width();
    const double viewHeight = viewSize.height();
    if (!PortraitDisplayModes::isPortrait(mode))
        return {0, 0, viewWidth, viewHeight};
    const double width = viewHeight * 9 * 0.0625;
    const double height = viewHeight;
    return {(viewWidth - width) * 0.5, (viewHeight - height) * 0.5, width, height};
}

QRectF videoRect(PortraitDisplayMode mode, QSizeF cropSize, QSizeF presentationSize, double pan)
{
    const double w = cropSize.width();
    const double h = cropSize.height();
    const QRectF whole(0, 0, w, h);
    if (!isPanned(mode))
        return whole;
    const double pw = presentationSize.width();
    const double ph = presentationSize.height();
    if (!(pw > 0) || !(ph > 0))
        return whole;
    const double a = pw / ph;
    const double c = w / (h <= 1 ? 1.0 : h);
    if (a > c) {
        const double overflow = std::max(a * h - w, 0.0);
        return {pan * overflow * 0.5 - overflow * 0.5, 0, a * h, h};
    }
    const double height = w / std::max(a, 0.01);
    return {0, (height - h) * -0.5, w, height};
}

QRectF zoomed(QRectF rect)
{
    const double k = zoomFactor - 1;
    return {rect.x() - rect.width() * k * 0.5, rect.y() - rect.height() * k * 0.5,
            rect.width() * k + rect.width(), rect.height() * k + rect.height()};
}

PlayerLayerFrame layout(PortraitDisplayMode mode, QSizeF viewSize, QSizeF presentationSize,
                        double pan)
{
    PlayerLayerFrame result;
    result.crop = cropRect(mode, viewSize);
    result.masksToBounds = PortraitDisplayModes::isPortrait(mode);
    const double w = result.crop.width();
    const double h = result.crop.height();
    if (mode == PortraitDisplayMode::rotate) {
        result.bounds = QSizeF(h, w);
        result.position = QPointF(w * 0.5, h * 0.5);
        result.rotation = rotateAngle;
        return result;
    }
    QRectF video = videoRect(mode, result.crop.size(), presentationSize, pan);
    if (isZoomed(mode))
        video = zoomed(video);
    result.bounds = video.size();
    result.position = video.center();
    return result;
}

double draggedPan(double startPan, double dx, double viewWidth)
{
    const double span = std::max(viewWidth * dragShareForFullPan, 1.0);
    return std::clamp(startPan + dx / span, -1.0, 1.0);
}

} // namespace DisplayGeometry
