#pragma once
// A view whose picture can be recorded: the video view or the web player's view.
#include <QRectF>

class QWidget;

class PlayerRecordingSurface
{
public:
    virtual ~PlayerRecordingSurface() = default;

    // The view to capture; every surface returns itself. The recorder finds the window from it.
    virtual QWidget *recordingView() = 0;
    // The part of the view a recording holds, in the view's own coordinates.
    virtual QRectF recordingRectInView() const = 0;
};
