#pragma once
// The control bar's time texts: minutes and seconds, with no hours field.
#include <QString>

namespace TimeText {

inline constexpr QChar minusSign = QChar(0x2212);

// "MM:SS" of whole seconds (truncated); minutes grow past 59 ("90:00"). "00:00" when not finite.
QString time(double seconds);
// U+2212 and the time left, never below zero.
QString remaining(double duration, double currentTime);

} // namespace TimeText
