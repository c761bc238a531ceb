#pragma once
// How the control bar fits a narrow width: the position slider keeps its room, the spacing
// between controls shrinks first, then the volume slider folds into a pop-up.
namespace ControlBarFit {

inline constexpr int minimumSliderWidth = 120;
inline constexpr int widestSpacing = 6;
inline constexpr int narrowestSpacing = 2;

struct Arrangement
{
    int spacing = widestSpacing;
    bool volumeFolded = false;
    friend bool operator==(const Arrangement &, const Arrangement &) = default;
};

// The arrangement for a bar barWidth wide whose controls other than the two sliders take
// fixed (margins included), with gaps spaces between its controls while the volume slider,
// volumeWidth wide, is in the row.
Arrangement arrange(int barWidth, int fixed, int gaps, int volumeWidth);

} // namespace ControlBarFit
