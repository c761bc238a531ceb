#pragma once
// What the test's private sound server plays: a short recording of its default output's
// monitor (through parec), read as the frequency of the tone heard.

namespace SoundProbe {

// The tone heard over the next `seconds`, in Hz, from the zero crossings of the mix; 0 when
// nothing could be recorded or all was silent.
double heardFrequency(double seconds = 1.0);

} // namespace SoundProbe
