#include "windowshape.h"

#include <algorithm>
#include <cmath>

namespace WindowShape {

Change change(double ratio, PortraitDisplayMode mode, double contentWidth)
{
    // "Not greater than 0" also catches NaN.
    if (!(ratio > 0))
        return ClearConstraint {};
    const double effectiveRatio = PortraitDisplayModes::isPortrait(mode) ? portraitRatio : ratio;
    if (!std::isfinite(effectiveRatio))
        return Keep {};
    const double width
        = std::max(std::isfinite(contentWidth) ? contentWidth : defaultWidth, minimumWidth);
    const double height = std::max(width / effectiveRatio + controlBarHeight, minimumHeight);
    if (!std::isfinite(height))
        return Keep {};
    return QSizeF(width, height);
}

} // namespace WindowShape
