#pragma once
// How a programme reads in the window: "20:00–21:00  News at Eight" in the user's time zone, and
// how far into it a moment is.
#include "guide/programmeguide.h"

#include <QString>

namespace ProgrammeText {

// The start and stop in local time, two spaces, the title.
QString line(const ProgrammeGuide::Programme &programme);
// 0 at the start, 1 at the stop, clamped.
double progress(const ProgrammeGuide::Programme &programme, qint64 moment);

} // namespace ProgrammeText
