#include "smartreframe.h"

#include <algorithm>
#include <cmath>

namespace SmartReframe {

QSize sampleSize(QSize picture)
{
    if (picture.isEmpty() || picture.width() <= sampleWidth)
        return picture;
    const int height
        = std::max(1, int(std::lround(double(sampleWidth) * picture.height() / picture.width())));
    return QSize(sampleWidth, height);
}

QList<QRectF> sortedByArea(QList<QRectF> faces)
{
    std::stable_sort(faces.begin(), faces.end(), [](const QRectF &a, const QRectF &b) {
        return a.width() * a.height() > b.width() * b.height();
    });
    return faces;
}

double targetPan(const std::optional<QRectF> &face)
{
    if (!face)
        return 0;
    return std::clamp((0.5 - face->center().x()) * 2, -1.0, 1.0);
}

double smoothedPan(double current, double target)
{
    return current + (target - current) * smoothing;
}

double nextPan(double current, const QList<QRectF> &faces)
{
    const QList<QRectF> sorted = sortedByArea(faces);
    const std::optional<QRectF> largest
        = sorted.isEmpty() ? std::nullopt : std::optional<QRectF>(sorted.first());
    return smoothedPan(current, targetPan(largest));
}

} // namespace SmartReframe
