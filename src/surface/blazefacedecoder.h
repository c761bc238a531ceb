#pragma once
// Turns the raw outputs of MediaPipe's BlazeFace networks into face boxes: the 896 anchors of
// its two feature maps, the box offsets relative to them, and MediaPipe's weighted
// non-maximum suppression. Coordinates are normalised to the network's square input.
#include <QList>
#include <QRectF>
#include <span>

namespace BlazeFaceDecoder {

struct Detection
{
    QRectF box;
    float score = 0;
};

// The anchors of the 16 x 16 map (2 per cell) followed by those of the 8 x 8 map (6 per cell).
inline constexpr int anchorCount = 16 * 16 * 2 + 8 * 8 * 6;
// Values per anchor in the box outputs: the box (x, y, w, h), then six key points.
inline constexpr int valuesPerAnchor = 16;
// MediaPipe's face detection graphs keep detections scoring at least this much...
inline constexpr float defaultScoreThreshold = 0.5f;
// ...and blend detections that overlap by more than this (intersection over union).
inline constexpr float overlapThreshold = 0.3f;

// The centre of anchor index, normalised to the input square.
QPointF anchorCentre(int index);

// scores: one raw logit per anchor; boxes: valuesPerAnchor raw values per anchor, both in
// anchor order. inputSize is the network's square side in pixels. Returns the detections
// scoring at least threshold, highest score first.
QList<Detection> decode(std::span<const float> scores, std::span<const float> boxes, int inputSize,
                        float threshold = defaultScoreThreshold);

// Weighted suppression: each group of detections overlapping the best remaining one is merged
// into one box, averaged by score, keeping the best score. Expects highest score first.
QList<Detection> suppress(const QList<Detection> &detections);

double intersectionOverUnion(const QRectF &a, const QRectF &b);

} // namespace BlazeFaceDecoder
