#include "mp4finisher.h"

#include "ffmpegsupport.h"

#include <QFile>
#include <vector>

namespace Mp4Finisher {

namespace {

QString copyStreams(const QString &source, const QString &target)
{
    AVFormatContext *rawInput = nullptr;
    int result = avformat_open_input(&rawInput, source.toUtf8().constData(), nullptr, nullptr);
    if (result < 0)
        return FFmpeg::errorText(result);
    FFmpeg::InputContext input(rawInput);
    if ((result = avformat_find_stream_info(input.get(), nullptr)) < 0)
        return FFmpeg::errorText(result);

    AVFormatContext *rawOutput = nullptr;
    result
        = avformat_alloc_output_context2(&rawOutput, nullptr, "mp4", target.toUtf8().constData());
    if (result < 0)
        return FFmpeg::errorText(result);
    FFmpeg::OutputContext output(rawOutput);

    std::vector<int> streamMap(input->nb_streams, -1);
    int next = 0;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVCodecParameters *parameters = input->streams[i]->codecpar;
        if (parameters->codec_type != AVMEDIA_TYPE_VIDEO
            && parameters->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        AVStream *stream = avformat_new_stream(output.get(), nullptr);
        if (!stream || avcodec_parameters_copy(stream->codecpar, parameters) < 0)
            return QStringLiteral("The recording's streams could not be copied.");
        stream->codecpar->codec_tag = 0;
        stream->time_base = input->streams[i]->time_base;
        streamMap[i] = next++;
    }

    if ((result = avio_open(&output->pb, target.toUtf8().constData(), AVIO_FLAG_WRITE)) < 0)
        return FFmpeg::errorText(result);
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    result = avformat_write_header(output.get(), &options);
    av_dict_free(&options);
    if (result < 0)
        return FFmpeg::errorText(result);

    FFmpeg::Packet packet(av_packet_alloc());
    while ((result = av_read_frame(input.get(), packet.get())) >= 0) {
        const int index = packet->stream_index;
        if (index < 0 || unsigned(index) >= streamMap.size() || streamMap[index] < 0) {
            av_packet_unref(packet.get());
            continue;
        }
        AVStream *out = output->streams[streamMap[index]];
        av_packet_rescale_ts(packet.get(), input->streams[index]->time_base, out->time_base);
        packet->stream_index = streamMap[index];
        packet->pos = -1;
        result = av_interleaved_write_frame(output.get(), packet.get());
        if (result < 0)
            return FFmpeg::errorText(result);
    }
    if (result != AVERROR_EOF)
        return FFmpeg::errorText(result);
    if ((result = av_write_trailer(output.get())) < 0)
        return FFmpeg::errorText(result);
    return {};
}

} // namespace

QString rewriteWithIndexFirst(const QString &source, const QString &target)
{
    const QString error = copyStreams(source, target);
    if (!error.isEmpty())
        QFile::remove(target);
    return error;
}

} // namespace Mp4Finisher
