#pragma once
// Where a recording's pixels come from and how big the file's picture is: the display that holds
// most of the player window, the player area on that display, and the output size per quality.
// Window and display frames are global, y downward; the surface rectangle is in window
// coordinates with y upward, as the capture arithmetic is written.
#include "playerrecorder.h"
#include "recordererror.h"

#include <QList>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <optional>
#include <variant>

namespace CaptureGeometry {

// A window the capture can see: its identifier and frame.
struct ShareableWindow
{
    quint64 windowID = 0;
    QRectF frame;
};

// The on-screen windows and the displays, in the order the system lists them.
struct ShareableContent
{
    QList<ShareableWindow> windows;
    QList<QRectF> displays;
};

// What a recording captures: the display, the area on it (display-local, y downward, clipped)
// and the size of the file's picture.
struct CapturePlan
{
    qsizetype displayIndex = 0;
    QRectF displayFrame;
    QRectF area;
    QSize outputSize;
};

// Areas this thin or thinner are refused.
constexpr double minimumAreaSide = 8;

// The display whose frame overlaps the window most; ties keep the earlier display. None only
// when there are no displays.
std::optional<qsizetype> displayIndexForWindow(const QList<QRectF> &displays, const QRectF &window);
// The surface rectangle (window coordinates, y upward) as a display-local area, not yet clipped.
QRectF captureArea(const QRectF &window, const QRectF &display, const QRectF &surfaceInWindow);
// The area cut to the display's own bounds.
QRectF clippedToDisplay(const QRectF &area, const QRectF &display);
// Rounds half away from zero, then down to an even number, at least 2.
int evenDimension(double value);
// The picture size of a recording of an area of size points.
QSize outputDimensions(const QSizeF &points, double scale, PlayerRecordingQuality quality);
// A rectangle in y-downward window coordinates (Qt's) as y-upward ones, for a window this tall.
QRectF flippedInWindow(const QRectF &rect, double windowHeight);

// The part of a view's picture a recording takes, in the picture's device pixels (rows from the
// top): the surface's rectangle in the view, less what of the view lies off its display. The
// view's frame and the display are global, y downward.
QRect pictureCrop(const QRectF &rectInView, const QRectF &viewFrame, const QRectF &display,
                  double ratio);
// Where a picture of size source goes in the file's picture of size output: as large as fits,
// its shape kept, centred, with even sides and offsets (the colour planes are half size).
QRect letterbox(QSize source, QSize output);

// Finds the window, its display and the area, and sizes the output; the first failure wins.
std::variant<CapturePlan, RecorderError> plan(const ShareableContent &content, quint64 windowNumber,
                                              const QRectF &surfaceInWindow, double scale,
                                              PlayerRecordingQuality quality);

} // namespace CaptureGeometry
