#include "ffmpegversion.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace FFmpeg {

QString versionText()
{
    return QStringLiteral("FFmpeg ") + QString::fromUtf8(av_version_info());
}

} // namespace FFmpeg
