#pragma once
// How the window follows the video's shape: the content size for a picture ratio and display
// mode, leaving room for the control bar under the picture.
#include "surface/portraitdisplaymode.h"

#include <QSizeF>
#include <variant>

namespace WindowShape {

inline constexpr double portraitRatio = 9.0 / 16.0;
inline constexpr double controlBarHeight = 34;
inline constexpr double minimumWidth = 520;
inline constexpr double minimumHeight = 360;
// The width assumed when the window has no content yet.
inline constexpr double defaultWidth = 700;

// Nothing to change.
struct Keep
{
    friend bool operator==(const Keep &, const Keep &) = default;
};
// No picture shape to follow: the window resizes freely.
struct ClearConstraint
{
    friend bool operator==(const ClearConstraint &, const ClearConstraint &) = default;
};
using Change = std::variant<Keep, ClearConstraint, QSizeF>;

// The change for a picture of width/height ratio shown in mode, in a content area contentWidth
// wide. Portrait modes always give a 9:16 window; the width never shrinks below the minimum and
// the height never below its minimum.
Change change(double ratio, PortraitDisplayMode mode, double contentWidth);

// content (a picture above the control bar) made to fit available, keeping the picture's
// shape: too tall, it takes the available height; too wide, the available width. Fitting the
// screen wins over the minimums.
QSizeF fitInto(QSizeF content, QSizeF available);

} // namespace WindowShape
