#include "capturegeometry.h"

#include <algorithm>
#include <cmath>

namespace CaptureGeometry {

namespace {

double overlapArea(const QRectF &a, const QRectF &b)
{
    const QRectF overlap = a.intersected(b);
    return overlap.isNull() ? 0 : overlap.width() * overlap.height();
}

} // namespace

std::optional<qsizetype> displayIndexForWindow(const QList<QRectF> &displays, const QRectF &window)
{
    if (displays.isEmpty())
        return std::nullopt;
    qsizetype best = 0;
    double bestArea = overlapArea(displays.first(), window);
    for (qsizetype i = 1; i < displays.size(); ++i) {
        const double area = overlapArea(displays.at(i), window);
        if (area > bestArea) {
            best = i;
            bestArea = area;
        }
    }
    return best;
}

QRectF captureArea(const QRectF &window, const QRectF &display, const QRectF &surfaceInWindow)
{
    const double x = window.left() + surfaceInWindow.left() - display.left();
    const double y = (window.top() + window.height())
        - (surfaceInWindow.top() + surfaceInWindow.height()) - display.top();
    return QRectF(x, y, surfaceInWindow.width(), surfaceInWindow.height());
}

QRectF clippedToDisplay(const QRectF &area, const QRectF &display)
{
    return area.intersected(QRectF(0, 0, display.width(), display.height()));
}

int evenDimension(double value)
{
    // std::round rounds halves away from zero.
    const auto rounded = static_cast<long long>(std::round(value));
    const long long even = rounded - (rounded % 2 + 2) % 2;
    return static_cast<int>(std::max<long long>(2, even));
}

QSize outputDimensions(const QSizeF &points, double scale, PlayerRecordingQuality quality)
{
    const double w = points.width();
    const double h = points.height();
    if (quality == PlayerRecordingQuality::normal)
        return QSize(evenDimension(w * scale), evenDimension(h * scale));
    const bool landscape = w >= h;
    const double targetWidth = landscape ? 1920 : 1080;
    const double targetHeight = landscape ? 1080 : 1920;
    const double factor = std::min(targetWidth / w, targetHeight / h);
    return QSize(evenDimension(w * factor), evenDimension(h * factor));
}

QRectF flippedInWindow(const QRectF &rect, double windowHeight)
{
    return QRectF(rect.left(), windowHeight - rect.top() - rect.height(), rect.width(),
                  rect.height());
}

std::variant<CapturePlan, RecorderError> plan(const ShareableContent &content, quint64 windowNumber,
                                              const QRectF &surfaceInWindow, double scale,
                                              PlayerRecordingQuality quality)
{
    const ShareableWindow *window = nullptr;
    for (const ShareableWindow &candidate : content.windows) {
        if (candidate.windowID == windowNumber) {
            window = &candidate;
            break;
        }
    }
    if (!window)
        return RecorderError::playerWindowNotFound;

    const std::optional<qsizetype> displayIndex
        = displayIndexForWindow(content.displays, window->frame);
    if (!displayIndex)
        return RecorderError::playerDisplayNotFound;
    const QRectF display = content.displays.at(*displayIndex);
    const QRectF onDisplay = display.intersected(window->frame);
    if (onDisplay.isNull() || onDisplay.width() * onDisplay.height() <= 0)
        return RecorderError::playerDisplayNotFound;

    const QRectF area
        = clippedToDisplay(captureArea(window->frame, display, surfaceInWindow), display);
    if (area.width() <= minimumAreaSide || area.height() <= minimumAreaSide)
        return RecorderError::invalidCaptureArea;

    CapturePlan result;
    result.displayIndex = *displayIndex;
    result.displayFrame = display;
    result.area = area;
    result.outputSize = outputDimensions(area.size(), scale, quality);
    return result;
}

QRect pictureCrop(const QRectF &rectInView, const QRectF &viewFrame, const QRectF &display,
                  double ratio)
{
    const QRectF onDisplay = viewFrame.intersected(display).translated(-viewFrame.topLeft());
    const QRectF part = rectInView.intersected(onDisplay);
    if (part.isEmpty())
        return {};
    return QRect(qRound(part.x() * ratio), qRound(part.y() * ratio), qRound(part.width() * ratio),
                 qRound(part.height() * ratio));
}

QRect letterbox(QSize source, QSize output)
{
    if (source.isEmpty() || output.isEmpty())
        return QRect(QPoint(0, 0), output);
    const double factor = std::min(double(output.width()) / source.width(),
                                   double(output.height()) / source.height());
    auto even = [](double value, int limit) {
        return std::clamp(int(std::lround(value / 2)) * 2, 2, limit);
    };
    const int width = even(source.width() * factor, output.width());
    const int height = even(source.height() * factor, output.height());
    return QRect((output.width() - width) / 4 * 2, (output.height() - height) / 4 * 2, width,
                 height);
}

} // namespace CaptureGeometry
