#include "controlbarfit.h"

namespace ControlBarFit {

Arrangement arrange(int barWidth, int fixed, int gaps, int volumeWidth)
{
    const int room = barWidth - fixed - minimumSliderWidth;
    for (int spacing = widestSpacing; spacing >= narrowestSpacing; --spacing)
        if (volumeWidth + gaps * spacing <= room)
            return {spacing, false};
    // Folded, the volume slider and the space before it leave the row.
    for (int spacing = widestSpacing; spacing >= narrowestSpacing; --spacing)
        if ((gaps - 1) * spacing <= room)
            return {spacing, true};
    return {narrowestSpacing, true};
}

} // namespace ControlBarFit
