#include "portraitdisplaymode.h"

namespace PortraitDisplayModes {

QString title(PortraitDisplayMode mode)
{
    switch (mode) {
    case PortraitDisplayMode::normal:
        return QStringLiteral("Normal");
    case PortraitDisplayMode::fill:
        return QStringLiteral("Portrait Fill");
    case PortraitDisplayMode::rotate:
        return QStringLiteral("Portrait Rotate 90°");
    case PortraitDisplayMode::manual:
        return QStringLiteral("Manual Reframe");
    case PortraitDisplayMode::smart:
        return QStringLiteral("Smart Reframe");
    }
    return {};
}

std::optional<PortraitDisplayMode> fromTitle(QStringView text)
{
    for (PortraitDisplayMode mode : allCases) {
        if (title(mode) == text)
            return mode;
    }
    return std::nullopt;
}

} // namespace PortraitDisplayModes
