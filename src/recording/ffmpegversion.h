#pragma once
// The FFmpeg the recorder runs on, for the About box; no FFmpeg header is needed to ask.
#include <QString>

namespace FFmpeg {

// "FFmpeg 5.1.6" (the libraries' own version text).
QString versionText();

} // namespace FFmpeg
