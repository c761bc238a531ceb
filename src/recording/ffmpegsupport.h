#pragma once
// Small owners and helpers for FFmpeg's C structures, shared by the writer and the remuxer.
#include <QString>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswscale/swscale.h>
}

namespace FFmpeg {

// FFmpeg's text for an error code.
QString errorText(int code);

struct CodecContextDeleter
{
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct FrameDeleter
{
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct PacketDeleter
{
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct AudioFifoDeleter
{
    void operator()(AVAudioFifo *fifo) const { av_audio_fifo_free(fifo); }
};
struct ScaleContextDeleter
{
    void operator()(SwsContext *context) const { sws_freeContext(context); }
};
// Closes the file, if one was opened, and frees the context.
struct OutputContextDeleter
{
    void operator()(AVFormatContext *context) const;
};
struct InputContextDeleter
{
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};

using CodecContext = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;
using AudioFifo = std::unique_ptr<AVAudioFifo, AudioFifoDeleter>;
using ScaleContext = std::unique_ptr<SwsContext, ScaleContextDeleter>;
using OutputContext = std::unique_ptr<AVFormatContext, OutputContextDeleter>;
using InputContext = std::unique_ptr<AVFormatContext, InputContextDeleter>;

} // namespace FFmpeg
