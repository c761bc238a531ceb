#pragma once
// The smart-reframe rules: which face the portrait window follows, where that puts the pan and
// how far each step moves it. Face rectangles are normalised to 0...1 of the picture.
#include <QList>
#include <QRectF>
#include <QSize>
#include <optional>

namespace SmartReframe {

// How often the picture is sampled while the mode is on.
inline constexpr int sampleIntervalMs = 450;
// Frames are analysed at this width (the height follows the picture's shape): half of a 1080p
// picture, where a face 1.2 % of the picture wide still has a dozen pixels.
inline constexpr int sampleWidth = 960;
// Each step covers this share of the remaining distance to the target.
inline constexpr double smoothing = 0.35;

// The size a picture is analysed at: sampleWidth wide, or its own size when narrower.
QSize sampleSize(QSize picture);

// The faces ordered by area, largest first; equal areas keep the detector's order.
QList<QRectF> sortedByArea(QList<QRectF> faces);
// The pan that centres the face: +1 for a face at the left edge, -1 at the right, 0 with none.
double targetPan(const std::optional<QRectF> &face);
// One step from current towards target.
double smoothedPan(double current, double target);
// One whole step: follow the largest of faces, or drift back to the centre when there is none.
double nextPan(double current, const QList<QRectF> &faces);

} // namespace SmartReframe
