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

QSizeF fitInto(QSizeF content, QSizeF available)
{
    const double picture = content.height() - controlBarHeight;
    if (!(picture > 0) || !(available.width() > 0) || !(available.height() > controlBarHeight))
        return content;
    const double ratio = content.width() / picture;
    if (content.height() > available.height())
        content = QSizeF((available.height() - controlBarHeight) * ratio, available.height());
    if (content.width() > available.width())
        content = QSizeF(available.width(), available.width() / ratio + controlBarHeight);
    return content;
}

} // namespace WindowShape
