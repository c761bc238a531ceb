#include "playercapturewriter.h"

#include "capturegeometry.h"
#include "ffmpegsupport.h"
#include "mp4finisher.h"
#include "recordingnames.h"

#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <csignal>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/opt.h>
}

struct PlayerCaptureWriter::Private
{
    QString path;
    QSize size;
    FFmpeg::OutputContext output;
    FFmpeg::CodecContext video;
    FFmpeg::CodecContext audio;
    AVStream *videoStream = nullptr;
    AVStream *audioStream = nullptr;
    FFmpeg::ScaleContext scaler;
    FFmpeg::Frame videoFrame;
    FFmpeg::Frame audioFrame;
    FFmpeg::AudioFifo fifo;
    FFmpeg::Packet packet;
    std::vector<float> left;
    std::vector<float> right;

    bool sessionStarted = false;
    // The first failure to write or encode: errno when the system gave one (else 0), and its
    // text. Nothing more is written after it.
    int failureCode = 0;
    QString failureDetail;
    double sessionStart = 0;
    qint64 lastSlot = -1;
    // The last slot holds the picture before it again, or black: a picture that comes late for
    // its own slot goes after it rather than being lost.
    bool lastSlotIsFiller = false;
    bool audioStarted = false;
    qint64 audioQueued = 0; // samples put on the timeline, silence included
    qint64 audioEncoded = 0;
    qint64 audioPackets = 0;
    // The smallest lateness of the sound stamps in the current half second.
    qint64 windowMinimumGap = std::numeric_limits<qint64>::max();
    qint64 windowFrames = 0;
    Statistics statistics;

    QString openVideo(const char *preset);
    QString openAudio();
    bool failed() const { return !failureDetail.isEmpty(); }
    std::optional<qint64> takeSlot(double time, bool filler);
    bool repeatUntil(qint64 slot);
    void fillBlack();
    bool encodeFrame(qint64 slot);
    void fail(int code);
    int drain(AVCodecContext *codec, AVStream *stream);
    int encode(AVCodecContext *codec, AVStream *stream, AVFrame *frame);
    void queueAudio(const float *samples, int frameCount);
    void queueSilence(qint64 frameCount);
    int encodeAudio(bool final);
};

namespace {

AVPixelFormat scaleFormat(QImage::Format format)
{
    switch (format) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGRA : AV_PIX_FMT_ARGB;
    case QImage::Format_RGBX8888:
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied:
        return AV_PIX_FMT_RGBA;
    default:
        return AV_PIX_FMT_NONE;
    }
}

} // namespace

QString PlayerCaptureWriter::Private::openVideo(const char *preset)
{
    const AVCodec *codec = avcodec_find_encoder_by_name("libx264");
    if (!codec)
        return QStringLiteral("The H.264 encoder (libx264) is not available.");
    video.reset(avcodec_alloc_context3(codec));
    AVCodecContext *c = video.get();
    c->width = size.width();
    c->height = size.height();
    c->pix_fmt = AV_PIX_FMT_YUV420P;
    c->time_base = AVRational {1, frameRate};
    c->framerate = AVRational {frameRate, 1};
    c->gop_size = keyFrameInterval;
    c->bit_rate = RecordingNames::averageBitRate(size.width(), size.height());
    c->profile = FF_PROFILE_H264_HIGH;
    // The pictures are converted with BT.709 at limited range; the file says so, so that
    // players show the colours that were on screen.
    c->color_range = AVCOL_RANGE_MPEG;
    c->colorspace = AVCOL_SPC_BT709;
    c->color_primaries = AVCOL_PRI_BT709;
    c->color_trc = AVCOL_TRC_BT709;
    if (output->oformat->flags & AVFMT_GLOBALHEADER)
        c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "preset", preset, 0);
    av_dict_set(&options, "profile", "high", 0);
    const int result = avcodec_open2(c, codec, &options);
    av_dict_free(&options);
    if (result < 0)
        return FFmpeg::errorText(result);

    videoStream = avformat_new_stream(output.get(), nullptr);
    if (!videoStream || avcodec_parameters_from_context(videoStream->codecpar, c) < 0)
        return QStringLiteral("The video track could not be added.");
    videoStream->time_base = c->time_base;
    videoStream->avg_frame_rate = c->framerate;

    videoFrame.reset(av_frame_alloc());
    videoFrame->format = c->pix_fmt;
    videoFrame->width = c->width;
    videoFrame->height = c->height;
    if (av_frame_get_buffer(videoFrame.get(), 0) < 0)
        return QStringLiteral("The video frame could not be allocated.");
    return {};
}

QString PlayerCaptureWriter::Private::openAudio()
{
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec)
        return QStringLiteral("The AAC encoder is not available.");
    audio.reset(avcodec_alloc_context3(codec));
    AVCodecContext *c = audio.get();
    c->sample_fmt = AV_SAMPLE_FMT_FLTP;
    c->sample_rate = audioSampleRate;
    av_channel_layout_default(&c->ch_layout, audioChannels);
    c->bit_rate = audioBitRate;
    c->time_base = AVRational {1, audioSampleRate};
    if (output->oformat->flags & AVFMT_GLOBALHEADER)
        c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int result = avcodec_open2(c, codec, nullptr);
    if (result < 0)
        return FFmpeg::errorText(result);

    audioStream = avformat_new_stream(output.get(), nullptr);
    if (!audioStream || avcodec_parameters_from_context(audioStream->codecpar, c) < 0)
        return QStringLiteral("The audio track could not be added.");
    audioStream->time_base = c->time_base;

    fifo.reset(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, audioChannels, audioSampleRate));
    audioFrame.reset(av_frame_alloc());
    audioFrame->format = c->sample_fmt;
    audioFrame->nb_samples = c->frame_size;
    audioFrame->sample_rate = c->sample_rate;
    av_channel_layout_copy(&audioFrame->ch_layout, &c->ch_layout);
    if (!fifo || av_frame_get_buffer(audioFrame.get(), 0) < 0)
        return QStringLiteral("The audio buffer could not be allocated.");
    return {};
}

std::unique_ptr<PlayerCaptureWriter> PlayerCaptureWriter::create(const QString &path, QSize size,
                                                                 QString *error, const char *preset)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return nullptr;
    };
    // FFmpeg's chatter would flood the player's log; its errors are reported here instead.
    av_log_set_level(AV_LOG_ERROR);
    // A file size limit must end the recording with an error, not end the player.
    std::signal(SIGXFSZ, SIG_IGN);
    if (size.width() < 2 || size.height() < 2 || size.width() % 2 || size.height() % 2)
        return fail(RecorderErrors::description(RecorderError::writerConfigurationFailed));
    if (QFileInfo::exists(path) && !QFile::remove(path))
        return fail(QStringLiteral("The existing file “%1” could not be replaced.")
                        .arg(QFileInfo(path).fileName()));

    auto d = std::make_unique<Private>();
    d->path = path;
    d->size = size;
    const QByteArray encodedPath = QFile::encodeName(path);
    AVFormatContext *rawOutput = nullptr;
    if (avformat_alloc_output_context2(&rawOutput, nullptr, "mp4", encodedPath.constData()) < 0)
        return fail(RecorderErrors::description(RecorderError::writerConfigurationFailed));
    d->output.reset(rawOutput);

    QString why = d->openVideo(preset);
    if (why.isEmpty())
        why = d->openAudio();
    if (!why.isEmpty())
        return fail(why);

    int result = avio_open(&d->output->pb, encodedPath.constData(), AVIO_FLAG_WRITE);
    if (result < 0)
        return fail(FFmpeg::errorText(result));
    // Fragments of at most a second, each written out at once: whatever stops the process, the
    // file plays up to its last fragment.
    d->output->flush_packets = 1;
    d->output->max_interleave_delta = 500'000;
    AVDictionary *options = nullptr;
    av_dict_set(&options, "movflags", "frag_keyframe+empty_moov+default_base_moof", 0);
    av_dict_set(&options, "frag_duration", "1000000", 0);
    result = avformat_write_header(d->output.get(), &options);
    av_dict_free(&options);
    if (result < 0) {
        d->output.reset();
        QFile::remove(path);
        return fail(FFmpeg::errorText(result));
    }
    d->packet.reset(av_packet_alloc());
    return std::unique_ptr<PlayerCaptureWriter>(new PlayerCaptureWriter(std::move(d)));
}

PlayerCaptureWriter::PlayerCaptureWriter(std::unique_ptr<Private> d)
    : d(std::move(d))
{ }

PlayerCaptureWriter::~PlayerCaptureWriter() = default;

QString PlayerCaptureWriter::outputPath() const
{
    return d->path;
}

QSize PlayerCaptureWriter::size() const
{
    return d->size;
}

bool PlayerCaptureWriter::sessionStarted() const
{
    return d->sessionStarted;
}

const PlayerCaptureWriter::Statistics &PlayerCaptureWriter::statistics() const
{
    return d->statistics;
}

void PlayerCaptureWriter::Private::fail(int code)
{
    if (failed())
        return;
    // FFmpeg's codes for the system's errors are the negated errno values.
    failureCode = code < 0 && code > -4096 ? -code : 0;
    failureDetail = FFmpeg::errorText(code);
}

int PlayerCaptureWriter::Private::encode(AVCodecContext *codec, AVStream *stream, AVFrame *frame)
{
    int result = avcodec_send_frame(codec, frame);
    if (result < 0 && result != AVERROR_EOF)
        return result;
    return drain(codec, stream);
}

int PlayerCaptureWriter::Private::drain(AVCodecContext *codec, AVStream *stream)
{
    for (;;) {
        int result = avcodec_receive_packet(codec, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return 0;
        if (result < 0)
            return result;
        av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        if ((result = av_interleaved_write_frame(output.get(), packet.get())) < 0)
            return result;
    }
}

std::optional<qint64> PlayerCaptureWriter::Private::takeSlot(double time, bool filler)
{
    if (!sessionStarted) {
        sessionStarted = true;
        sessionStart = time;
    }
    // The picture's place on the 30-per-second timeline. A picture whose slot is taken by
    // another picture moves to the next one if that is at most a frame later than its time; one
    // that comes sooner is not needed. A slot taken by filler costs a picture its place only
    // when the picture is so late that the next slot is a quarter of a second past its time:
    // an encoder that falls behind drops pictures rather than stretching the file past the
    // moment it was stopped. Slots passed over had no picture in time: they are the dropped
    // frames, shown with the picture before them.
    const double exact = (time - sessionStart) * frameRate;
    qint64 slot = std::llround(exact);
    if (slot <= lastSlot) {
        const double allowedLead = lastSlotIsFiller ? lateSlotsAfterFiller : 1;
        if (double(lastSlot + 1) > exact + allowedLead) {
            if (!filler)
                ++statistics.picturesTooLate;
            return std::nullopt;
        }
        slot = lastSlot + 1;
    }
    if (!filler)
        statistics.framesDropped += slot - lastSlot - 1;
    if (lastSlot >= 0 && !repeatUntil(slot - 1))
        return std::nullopt;
    lastSlot = slot;
    lastSlotIsFiller = filler;
    return slot;
}

bool PlayerCaptureWriter::Private::repeatUntil(qint64 slot)
{
    // The frame still holds the last picture written; the encoder has its own copy.
    for (qint64 next = lastSlot + 1; next <= slot; ++next) {
        if (!encodeFrame(next))
            return false;
        lastSlot = next;
        lastSlotIsFiller = true;
    }
    return true;
}

void PlayerCaptureWriter::Private::fillBlack()
{
    // Black at limited range: Y 16, Cb and Cr 128.
    AVFrame *frame = videoFrame.get();
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane ? (frame->height + 1) / 2 : frame->height;
        std::memset(frame->data[plane], plane ? 128 : 16, size_t(frame->linesize[plane]) * rows);
    }
}

bool PlayerCaptureWriter::Private::encodeFrame(qint64 slot)
{
    // Writing on into a file whose folder was removed would lose everything unnoticed: the
    // system keeps accepting the bytes of a file that no longer has a name. Checked once a
    // second of the file, whether the frame is new or a repeat.
    if (slot % frameRate == 0 && !QFileInfo::exists(path)) {
        fail(AVERROR(ENOENT));
        return false;
    }
    videoFrame->pts = slot;
    if (const int result = encode(video.get(), videoStream, videoFrame.get())) {
        fail(result);
        return false;
    }
    ++statistics.framesWritten;
    return true;
}

bool PlayerCaptureWriter::appendVideo(const QImage &picture, const QRect &crop, bool bottomUp,
                                      double time)
{
    if (!d->output || d->failed())
        return false;
    const QRect area = crop.intersected(picture.rect());
    const AVPixelFormat format = scaleFormat(picture.format());
    if (area.width() < 2 || area.height() < 2 || format == AV_PIX_FMT_NONE)
        return false;
    const std::optional<qint64> slot = d->takeSlot(time, false);
    if (!slot)
        return false;

    // The area keeps its shape whatever happened to the view since the start: it is fitted
    // into the file's picture, with black around it.
    const QRect target = CaptureGeometry::letterbox(area.size(), d->size);
    d->scaler.reset(sws_getCachedContext(d->scaler.release(), area.width(), area.height(), format,
                                         target.width(), target.height(), AV_PIX_FMT_YUV420P,
                                         SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!d->scaler)
        return false;
    const int *coefficients = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(d->scaler.get(), coefficients, 1, coefficients, 0, 0, 1 << 16,
                             1 << 16);

    const int row = bottomUp ? picture.height() - 1 - area.top() : area.top();
    const uint8_t *source[1] = {picture.constScanLine(row) + area.left() * 4};
    const int stride[1] = {bottomUp ? -int(picture.bytesPerLine()) : int(picture.bytesPerLine())};
    if (av_frame_make_writable(d->videoFrame.get()) < 0)
        return false;
    AVFrame *frame = d->videoFrame.get();
    if (target.size() != d->size)
        d->fillBlack();
    uint8_t *planes[3] = {
        frame->data[0] + target.y() * frame->linesize[0] + target.x(),
        frame->data[1] + target.y() / 2 * frame->linesize[1] + target.x() / 2,
        frame->data[2] + target.y() / 2 * frame->linesize[2] + target.x() / 2,
    };
    sws_scale(d->scaler.get(), source, stride, 0, area.height(), planes, frame->linesize);
    if (!d->encodeFrame(*slot))
        return false;
    ++d->statistics.picturesWritten;
    return true;
}

bool PlayerCaptureWriter::repeatLast(double time)
{
    if (!d->output || d->failed() || d->lastSlot < 0)
        return false;
    return d->repeatUntil(std::llround((time - d->sessionStart) * frameRate));
}

bool PlayerCaptureWriter::appendBlack(double time)
{
    if (!d->output || d->failed())
        return false;
    const std::optional<qint64> slot = d->takeSlot(time, true);
    if (!slot || av_frame_make_writable(d->videoFrame.get()) < 0)
        return false;
    d->fillBlack();
    return d->encodeFrame(*slot);
}

void PlayerCaptureWriter::Private::queueSilence(qint64 frameCount)
{
    std::vector<float> silence(size_t(std::min<qint64>(frameCount, audioSampleRate)), 0.f);
    while (frameCount > 0) {
        const int chunk = int(std::min<qint64>(frameCount, qint64(silence.size())));
        void *planes[2] = {silence.data(), silence.data()};
        av_audio_fifo_write(fifo.get(), planes, chunk);
        audioQueued += chunk;
        frameCount -= chunk;
    }
}

void PlayerCaptureWriter::Private::queueAudio(const float *samples, int frameCount)
{
    left.resize(size_t(frameCount));
    right.resize(size_t(frameCount));
    for (int i = 0; i < frameCount; ++i) {
        left[size_t(i)] = samples[2 * i];
        right[size_t(i)] = samples[2 * i + 1];
    }
    void *planes[2] = {left.data(), right.data()};
    av_audio_fifo_write(fifo.get(), planes, frameCount);
    audioQueued += frameCount;
}

int PlayerCaptureWriter::Private::encodeAudio(bool final)
{
    const int frameSize = audio->frame_size;
    while (av_audio_fifo_size(fifo.get()) >= frameSize
           || (final && av_audio_fifo_size(fifo.get()) > 0)) {
        const int count = std::min(frameSize, av_audio_fifo_size(fifo.get()));
        if (const int result = av_frame_make_writable(audioFrame.get()); result < 0)
            return result;
        audioFrame->nb_samples = count;
        av_audio_fifo_read(fifo.get(), reinterpret_cast<void **>(audioFrame->data), count);
        audioFrame->pts = audioEncoded;
        audioEncoded += count;
        if (const int result = encode(audio.get(), audioStream, audioFrame.get()))
            return result;
        statistics.audioSamplesWritten += count;
        ++audioPackets;
    }
    return 0;
}

void PlayerCaptureWriter::appendAudio(const float *samples, int frameCount, double time)
{
    if (!d->output || d->failed() || !d->sessionStarted || frameCount <= 0)
        return;
    // Where these samples belong on the file's timeline, by the capture clock.
    const auto position = std::llround((time - d->sessionStart) * audioSampleRate);
    const auto realign = std::llround(audioRealignSeconds * audioSampleRate);
    const qint64 gap = position - d->audioQueued;
    auto realignBy = [&](qint64 amount, bool first) {
        // Pad the timeline with silence, or cut what was heard before its place.
        if (amount > 0) {
            d->queueSilence(amount);
        } else if (amount < 0) {
            const qint64 cut = std::min<qint64>(-amount, frameCount);
            samples += 2 * cut;
            frameCount -= int(cut);
            amount = -cut;
        }
        (first ? d->statistics.audioLeadIn : d->statistics.audioRealigned)
            += double(amount) / audioSampleRate * (first ? 1 : (amount < 0 ? -1 : 1));
        d->windowFrames = 0;
        d->windowMinimumGap = std::numeric_limits<qint64>::max();
    };
    if (!d->audioStarted) {
        // Sound heard before the first picture is not in the file: the file starts with its
        // picture, and the sound is cut at exactly that moment, however many pieces it spans.
        if (gap + frameCount <= 0)
            return;
        d->audioStarted = true;
        realignBy(gap, true);
    } else if (gap < -realign) {
        // Sound ahead of the clock cannot come from late delivery: the clocks drifted apart.
        realignBy(gap, false);
    } else {
        // Deliveries come late, in bursts, so a single stamp reads later than its sound. The
        // earliest stamp of the last half second tells how far the sound really is behind.
        d->windowMinimumGap = std::min(d->windowMinimumGap, gap);
        d->windowFrames += frameCount;
        if (d->windowFrames >= audioSampleRate / 2) {
            d->statistics.audioOffset = -double(d->windowMinimumGap) / audioSampleRate;
            if (d->windowMinimumGap > realign)
                realignBy(d->windowMinimumGap, false);
            d->windowFrames = 0;
            d->windowMinimumGap = std::numeric_limits<qint64>::max();
        }
    }
    if (frameCount > 0)
        d->queueAudio(samples, frameCount);
    if (const int result = d->encodeAudio(false))
        d->fail(result);
}

bool PlayerCaptureWriter::failed() const
{
    return d->failed();
}

PlayerCaptureWriter::Outcome PlayerCaptureWriter::finish()
{
    if (!d->sessionStarted) {
        cancel();
        return {{}, RecorderErrors::description(RecorderError::noFramesCaptured)};
    }
    if (!d->failed()) {
        int result = d->encodeAudio(true);
        if (!result)
            result = d->encode(d->audio.get(), d->audioStream, nullptr);
        if (!result)
            result = d->encode(d->video.get(), d->videoStream, nullptr);
        if (result)
            d->fail(result);
    }
    if (!d->failed()) {
        if (const int result = av_write_trailer(d->output.get()); result < 0)
            d->fail(result);
        else if (d->output->pb->error < 0)
            d->fail(d->output->pb->error);
    }
    d->output.reset();
    if (d->failed()) {
        // What reached the disk plays up to its last whole fragment.
        const QFileInfo kept(d->path);
        return {
            {},
            RecorderErrors::writeFailure(d->failureCode, d->failureDetail,
                                         kept.exists() && kept.size() > 0 ? d->path : QString())};
    }
    // The fragments played safe while recording; the finished file gets one index at the
    // front. Should that fail (the disk filled up meanwhile), the fragmented file plays as it is.
    Mp4Finisher::finishInPlace(d->path, d->statistics.framesWritten + d->audioPackets);
    return {d->path, {}};
}

void PlayerCaptureWriter::cancel()
{
    d->output.reset();
    QFile::remove(d->path);
}
