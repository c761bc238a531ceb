#include "facetiles.h"

#include <algorithm>

namespace FaceTiles {

namespace {

// Offsets of count tiles of length along a side of total, the first at 0, the last at the end.
QList<int> offsets(int total, int length, int minOverlap)
{
    if (total <= length)
        return {0};
    // Tiles share at most half their length: a larger overlap would only multiply them.
    const int stride = std::max(length - minOverlap, (length + 1) / 2);
    const int count = 1 + (total - length + stride - 1) / stride;
    QList<int> result;
    for (int i = 0; i < count; ++i)
        result.append(int(qint64(total - length) * i / (count - 1)));
    return result;
}

} // namespace

QList<QRect> layout(QSize frame, QSize tileSize, int minOverlap)
{
    if (frame.isEmpty() || tileSize.isEmpty())
        return {};
    const int width = std::min(frame.width(), tileSize.width());
    const int height = std::min(frame.height(), tileSize.height());
    QList<QRect> tiles;
    for (int y : offsets(frame.height(), height, minOverlap)) {
        for (int x : offsets(frame.width(), width, minOverlap))
            tiles.append(QRect(x, y, width, height));
    }
    return tiles;
}

bool touchesInnerEdge(const QRectF &box, const QRect &tile, QSize frame, double margin)
{
    const double left = tile.x(), top = tile.y();
    const double right = tile.x() + tile.width(), bottom = tile.y() + tile.height();
    return (left > 0 && box.left() <= left + margin) || (top > 0 && box.top() <= top + margin)
        || (right < frame.width() && box.right() >= right - margin)
        || (bottom < frame.height() && box.bottom() >= bottom - margin);
}

double overlapOfSmaller(const QRectF &a, const QRectF &b)
{
    const QRectF inner = a.intersected(b);
    const double innerArea = inner.width() * inner.height();
    const double smaller = std::min(a.width() * a.height(), b.width() * b.height());
    return smaller > 0 ? innerArea / smaller : 0;
}

QList<ScoredFace> merge(QList<ScoredFace> faces, double threshold)
{
    std::stable_sort(faces.begin(), faces.end(),
                     [](const ScoredFace &a, const ScoredFace &b) { return a.score > b.score; });
    QList<ScoredFace> kept;
    for (const ScoredFace &face : std::as_const(faces)) {
        const bool seen = std::any_of(kept.cbegin(), kept.cend(), [&](const ScoredFace &k) {
            return overlapOfSmaller(k.box, face.box) > threshold;
        });
        if (!seen)
            kept.append(face);
    }
    return kept;
}

} // namespace FaceTiles
