#include "mp4finisher.h"

#include "ffmpegsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace Mp4Finisher {

namespace {

// The samples FFmpeg's AAC encoder puts before the sound, which recordings are made with.
constexpr int64_t aacPrimingSamples = 1024;

// Room for the index in front of the media: measured at about 15 bytes a packet (sample size,
// time, chunk offset), with a margin for long recordings' wider offsets and the header boxes.
qint64 indexRoom(qint64 packetCount)
{
    return 64 * 1024 + 32 * packetCount;
}

FFmpeg::InputContext openInput(const QString &path, QString *error)
{
    AVFormatContext *raw = nullptr;
    int result = avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr);
    if (result < 0) {
        *error = FFmpeg::errorText(result);
        return {};
    }
    FFmpeg::InputContext input(raw);
    if ((result = avformat_find_stream_info(input.get(), nullptr)) < 0) {
        *error = FFmpeg::errorText(result);
        return {};
    }
    return input;
}

qint64 countPackets(const QString &path, QString *error)
{
    FFmpeg::InputContext input = openInput(path, error);
    if (!input)
        return -1;
    FFmpeg::Packet packet(av_packet_alloc());
    qint64 count = 0;
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        ++count;
        av_packet_unref(packet.get());
    }
    return count;
}

QString copyStreams(const QString &source, const QString &target, qint64 packetCount,
                    bool keepWhatReads)
{
    QString error;
    FFmpeg::InputContext input = openInput(source, &error);
    if (!input)
        return error;
    const QByteArray targetName = QFile::encodeName(target);
    AVFormatContext *rawOutput = nullptr;
    int result = avformat_alloc_output_context2(&rawOutput, nullptr, "mp4", targetName.constData());
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

    if ((result = avio_open(&output->pb, targetName.constData(), AVIO_FLAG_WRITE)) < 0)
        return FFmpeg::errorText(result);
    // The index is written into room kept at the front, so the media is written only once
    // (faststart would move all of it a second time).
    AVDictionary *options = nullptr;
    av_dict_set_int(&options, "moov_size", indexRoom(packetCount), 0);
    result = avformat_write_header(output.get(), &options);
    av_dict_free(&options);
    if (result < 0)
        return FFmpeg::errorText(result);

    // Fragments cannot say where a track's presentation begins, so in them the video starts
    // late by the encoder's reordering delay and the sound early by the encoder's priming. The
    // plain file can: each track's first picture or sample is put back at zero, and the index
    // says what to skip.
    std::vector<int64_t> shift(input->nb_streams, AV_NOPTS_VALUE);
    FFmpeg::Packet packet(av_packet_alloc());
    while ((result = av_read_frame(input.get(), packet.get())) >= 0) {
        const int index = packet->stream_index;
        if (index < 0 || unsigned(index) >= streamMap.size() || streamMap[index] < 0) {
            av_packet_unref(packet.get());
            continue;
        }
        const AVStream *in = input->streams[index];
        if (shift[index] == AV_NOPTS_VALUE) {
            shift[index] = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
            if (in->codecpar->codec_id == AV_CODEC_ID_AAC && in->codecpar->sample_rate > 0)
                shift[index] += av_rescale_q(
                    aacPrimingSamples, AVRational {1, in->codecpar->sample_rate}, in->time_base);
        }
        if (packet->pts != AV_NOPTS_VALUE)
            packet->pts -= shift[index];
        if (packet->dts != AV_NOPTS_VALUE)
            packet->dts -= shift[index];
        AVStream *out = output->streams[streamMap[index]];
        av_packet_rescale_ts(packet.get(), input->streams[index]->time_base, out->time_base);
        packet->stream_index = streamMap[index];
        packet->pos = -1;
        result = av_interleaved_write_frame(output.get(), packet.get());
        if (result < 0)
            return FFmpeg::errorText(result);
    }
    // A file cut off by a crash ends in a broken fragment: what reads before it is kept.
    if (result != AVERROR_EOF && !keepWhatReads)
        return FFmpeg::errorText(result);
    if ((result = av_write_trailer(output.get())) < 0)
        return FFmpeg::errorText(result);
    if (output->pb->error < 0)
        return FFmpeg::errorText(output->pb->error);
    return {};
}

// Puts the file's bytes on the disk before it replaces the recording, so a power cut after
// the rename cannot leave an empty file in its place.
bool syncFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

} // namespace

QString finishingPath(const QString &path)
{
    const QFileInfo info(path);
    return info.dir().filePath(QStringLiteral(".%1.finishing").arg(info.fileName()));
}

bool isFragmented(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // The top-level boxes up to the first media: a fragmented file has a fragment box there,
    // or an index that announces fragments.
    qint64 offset = 0;
    while (offset + 8 <= file.size()) {
        if (!file.seek(offset))
            return false;
        const QByteArray header = file.read(16);
        if (header.size() < 8)
            return false;
        qint64 size = qFromBigEndian<quint32>(header.constData());
        if (size == 1 && header.size() == 16)
            size = qFromBigEndian<qint64>(header.constData() + 8);
        const QByteArray type = header.mid(4, 4);
        if (type == "moof" || type == "mfra")
            return true;
        if (type == "moov")
            return file.read(size - header.size()).contains("mvex");
        if (size < 8)
            return false;
        offset += size;
    }
    return false;
}

QString finishInPlace(const QString &path, qint64 packetCount)
{
    QString error;
    const bool cutOff = packetCount <= 0;
    if (cutOff && (packetCount = countPackets(path, &error)) < 0)
        return error;
    const QString finishing = finishingPath(path);
    error = copyStreams(path, finishing, packetCount, cutOff);
    if (error.isEmpty() && !syncFile(finishing))
        error = QString::fromLocal8Bit(strerror(errno));
    // One rename replaces the recording with its finished copy.
    if (error.isEmpty()
        && std::rename(QFile::encodeName(finishing).constData(),
                       QFile::encodeName(path).constData())
            != 0)
        error = QString::fromLocal8Bit(strerror(errno));
    if (!error.isEmpty())
        QFile::remove(finishing);
    return error;
}

} // namespace Mp4Finisher
