#pragma once
// The player window's size rules: its minimum, the room the sidebar needs and the first size.
#include <QSize>

namespace WindowSizes {

inline constexpr QSize initialContentSize {700, 430};
inline constexpr int sidebarMinimumWidth = 780;
inline constexpr int sidebarMinimumHeight = 430;
inline constexpr int plainMinimumWidth = 520;
inline constexpr int minimumHeight = 360;

constexpr QSize minimumContentSize(bool sidebarVisible)
{
    return {sidebarVisible ? sidebarMinimumWidth : plainMinimumWidth, minimumHeight};
}

// The content size to grow to when the sidebar shows: a narrower window becomes 780 wide and at
// least 430 high; a wide enough one keeps its size. Hiding the sidebar never shrinks the window.
constexpr QSize contentSizeForSidebar(QSize current, bool sidebarVisible)
{
    if (!sidebarVisible || current.width() >= sidebarMinimumWidth)
        return current;
    return {sidebarMinimumWidth,
            current.height() > sidebarMinimumHeight ? current.height() : sidebarMinimumHeight};
}

} // namespace WindowSizes
