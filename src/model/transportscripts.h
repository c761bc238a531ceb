#pragma once
// The script statements that carry transport commands to the embedded web player's page.
#include <QString>

namespace TransportScripts {
QString toggle();
// lumoSkip(seconds); with the number in its shortest exact decimal form.
QString skip(double seconds);
// lumoSetVolume(value); with the value clamped to 0...1.
QString setVolume(double value);
QString setMuted(bool muted);
// Shortest decimal text that reads back as the same double; "0" for values that are not finite.
QString number(double value);
} // namespace TransportScripts
