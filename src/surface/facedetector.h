#pragma once
// Finds faces in a video frame for smart reframe. Rectangles are normalised to 0...1 of the
// frame, with the origin at the top-left as in the picture, and come in the detector's order.
#include <QImage>
#include <QList>
#include <QRectF>

class FaceDetector
{
public:
    virtual ~FaceDetector() = default;

    // frame holds 32-bit pixels in B, G, R, x byte order (QImage::Format_RGB32 on
    // little-endian machines, as mpv's bgr0 frames are).
    virtual QList<QRectF> detect(const QImage &frame) = 0;
    // A short name for logs and benchmarks.
    virtual QString name() const = 0;
};
