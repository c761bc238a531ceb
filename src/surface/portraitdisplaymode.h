#pragma once
// How the player area shows the video: as it is, or as a 9:16 portrait window cut out of it.
// Each mode's title is what the user sees in the display-mode menu.
#include <QString>
#include <array>
#include <optional>

enum class PortraitDisplayMode { normal, fill, rotate, manual, smart };

namespace PortraitDisplayModes {

// Every mode in menu order.
inline constexpr std::array<PortraitDisplayMode, 5> allCases {
    PortraitDisplayMode::normal, PortraitDisplayMode::fill, PortraitDisplayMode::rotate,
    PortraitDisplayMode::manual, PortraitDisplayMode::smart};

QString title(PortraitDisplayMode mode);
// The mode whose title is exactly text; none for any other text.
std::optional<PortraitDisplayMode> fromTitle(QStringView text);

// Whether the mode shows the 9:16 window rather than the whole picture.
constexpr bool isPortrait(PortraitDisplayMode mode)
{
    return mode != PortraitDisplayMode::normal;
}

} // namespace PortraitDisplayModes
