#include "blazefacedecoder.h"

#include <algorithm>
#include <cmath>

namespace BlazeFaceDecoder {

namespace {
struct FeatureMap
{
    int cells;
    int anchorsPerCell;
};
constexpr FeatureMap featureMaps[] {{16, 2}, {8, 6}};

float sigmoid(float logit)
{
    // MediaPipe clips the logits before the sigmoid.
    const float clipped = std::clamp(logit, -100.0f, 100.0f);
    return 1.0f / (1.0f + std::exp(-clipped));
}
} // namespace

QPointF anchorCentre(int index)
{
    for (const FeatureMap &map : featureMaps) {
        const int count = map.cells * map.cells * map.anchorsPerCell;
        if (index < count) {
            const int cell = index / map.anchorsPerCell;
            return {(cell % map.cells + 0.5) / map.cells, (cell / map.cells + 0.5) / map.cells};
        }
        index -= count;
    }
    return {};
}

QList<Detection> decode(std::span<const float> scores, std::span<const float> boxes, int inputSize,
                        float threshold)
{
    QList<Detection> found;
    if (inputSize <= 0 || scores.size() < size_t(anchorCount)
        || boxes.size() < size_t(anchorCount) * valuesPerAnchor)
        return found;
    const double scale = 1.0 / inputSize;
    for (int i = 0; i < anchorCount; ++i) {
        const float score = sigmoid(scores[i]);
        if (!(score >= threshold))
            continue;
        const float *raw = boxes.data() + size_t(i) * valuesPerAnchor;
        const QPointF anchor = anchorCentre(i);
        const double centreX = anchor.x() + raw[0] * scale;
        const double centreY = anchor.y() + raw[1] * scale;
        const double width = raw[2] * scale;
        const double height = raw[3] * scale;
        if (!(width > 0) || !(height > 0))
            continue;
        found.append({QRectF(centreX - width / 2, centreY - height / 2, width, height), score});
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Detection &a, const Detection &b) { return a.score > b.score; });
    return found;
}

double intersectionOverUnion(const QRectF &a, const QRectF &b)
{
    const QRectF inner = a.intersected(b);
    const double innerArea = inner.width() * inner.height();
    const double unionArea = a.width() * a.height() + b.width() * b.height() - innerArea;
    return unionArea > 0 ? innerArea / unionArea : 0;
}

QList<Detection> suppress(const QList<Detection> &detections)
{
    QList<Detection> remaining = detections;
    QList<Detection> kept;
    while (!remaining.isEmpty()) {
        const Detection best = remaining.first();
        double weight = 0;
        double x = 0, y = 0, right = 0, bottom = 0;
        QList<Detection> rest;
        for (const Detection &candidate : remaining) {
            if (intersectionOverUnion(best.box, candidate.box) > overlapThreshold) {
                weight += candidate.score;
                x += candidate.box.left() * candidate.score;
                y += candidate.box.top() * candidate.score;
                right += candidate.box.right() * candidate.score;
                bottom += candidate.box.bottom() * candidate.score;
            } else {
                rest.append(candidate);
            }
        }
        if (weight > 0) {
            kept.append(
                {QRectF(QPointF(x / weight, y / weight), QPointF(right / weight, bottom / weight)),
                 best.score});
        } else {
            // A box too thin to overlap even itself stays as it is.
            kept.append(best);
            rest.removeFirst();
        }
        remaining = rest;
    }
    return kept;
}

} // namespace BlazeFaceDecoder
