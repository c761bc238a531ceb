#include "ffmpegsupport.h"

namespace FFmpeg {

QString errorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

void OutputContextDeleter::operator()(AVFormatContext *context) const
{
    if (context && context->pb && !(context->oformat->flags & AVFMT_NOFILE))
        avio_closep(&context->pb);
    avformat_free_context(context);
}

} // namespace FFmpeg
