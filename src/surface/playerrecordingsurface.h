#pragma once
// A view whose picture can be recorded: the video view or the web player's view.
#include <QImage>
#include <QRectF>
#include <chrono>
#include <functional>
#include <optional>

class QWidget;

// A picture a surface has drawn, the whole view in device pixels. Rows run from the bottom when
// bottomUp is set, as a GPU reads them back.
struct CapturedPicture
{
    QImage image;
    bool bottomUp = false;
    // When it was drawn, on the steady clock; unset when it was taken as it was handed over.
    std::optional<std::chrono::steady_clock::time_point> drawnAt;
};

class PlayerRecordingSurface
{
public:
    // Called on the main thread with each picture the surface draws.
    using PictureReceiver = std::function<void(const CapturedPicture &)>;

    virtual ~PlayerRecordingSurface() = default;

    // The view to capture; every surface returns itself. The recorder finds the window from it.
    virtual QWidget *recordingView() = 0;
    // The part of the view a recording holds, in the view's own coordinates.
    virtual QRectF recordingRectInView() const = 0;
    // While a receiver is set, the surface hands it what it draws, read back from the drawing
    // itself rather than drawn a second time. An empty receiver stops it.
    virtual void setPictureReceiver(PictureReceiver receiver) = 0;
};
