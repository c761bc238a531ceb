#include "transportscripts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace TransportScripts {

QString number(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("0");
    std::array<char, 32> buffer {};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return QString::fromLatin1(buffer.data(), result.ptr - buffer.data());
}

QString toggle()
{
    return QStringLiteral("lumoToggle();");
}

QString skip(double seconds)
{
    return QStringLiteral("lumoSkip(%1);").arg(number(seconds));
}

QString setVolume(double value)
{
    const double clamped = std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0);
    return QStringLiteral("lumoSetVolume(%1);").arg(number(clamped));
}

QString setMuted(bool muted)
{
    return muted ? QStringLiteral("lumoSetMuted(true);") : QStringLiteral("lumoSetMuted(false);");
}

} // namespace TransportScripts
