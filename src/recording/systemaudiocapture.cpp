#include "systemaudiocapture.h"

#include "captureclock.h"

#include <pulse/pulseaudio.h>
#include <vector>

struct SystemAudioCapture::Private
{
    Receiver receiver;
    FailureHandler onFailure;
    pa_threaded_mainloop *loop = nullptr;
    pa_context *context = nullptr;
    pa_stream *stream = nullptr;
    bool stopping = false;
    bool failureReported = false;
    // How long before it is heard the monitored output hands a sample to its monitor: the
    // output's own latency. Unknown (negative) until asked once sound flows, since before then
    // it reads the output's idle latency, up to seconds.
    double ahead = -1;
    bool aheadAsked = false;
    // Sound read while the latency is being asked, with its stamps without it.
    struct Held
    {
        std::vector<float> samples;
        double time = 0;
    };
    std::vector<Held> held;

    static void contextState(pa_context *context, void *self)
    {
        auto *d = static_cast<Private *>(self);
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
            d->reportFailure();
        pa_threaded_mainloop_signal(d->loop, 0);
    }
    static void streamState(pa_stream *stream, void *self)
    {
        auto *d = static_cast<Private *>(self);
        if (pa_stream_get_state(stream) == PA_STREAM_FAILED && !d->stopping && !d->failureReported
            && d->onFailure && d->receiverRunning) {
            d->failureReported = true;
            d->onFailure(QString::fromUtf8(pa_strerror(pa_context_errno(d->context))));
        }
        pa_threaded_mainloop_signal(d->loop, 0);
    }
    static void streamRead(pa_stream *stream, size_t, void *self)
    {
        auto *d = static_cast<Private *>(self);
        const void *data = nullptr;
        size_t bytes = 0;
        // Everything readable now reached the monitor just before now, in order: the first
        // sample's stamp is now less all of it, and each piece follows the one before. It is
        // heard the output's latency later.
        constexpr size_t frameBytes = sizeof(float) * channels;
        double time = CaptureClock::now()
            - double(pa_stream_readable_size(stream) / frameBytes) / sampleRate;
        if (!d->aheadAsked) {
            d->aheadAsked = true;
            if (pa_operation *asked
                = pa_stream_update_timing_info(stream, &Private::timingKnown, d))
                pa_operation_unref(asked);
            else
                d->ahead = 0; // a server that cannot say: the stamps stand as they are
        }
        while (pa_stream_readable_size(stream) > 0) {
            if (pa_stream_peek(stream, &data, &bytes) < 0 || bytes == 0)
                return;
            const int frames = int(bytes / frameBytes);
            if (data && !d->stopping) {
                const auto *samples = static_cast<const float *>(data);
                if (d->ahead >= 0)
                    d->receiver(samples, frames, time + d->ahead);
                else
                    d->held.push_back(
                        {std::vector<float>(samples, samples + qsizetype(frames) * channels),
                         time});
            }
            time += double(frames) / sampleRate;
            pa_stream_drop(stream);
        }
    }
    static void timingKnown(pa_stream *stream, int success, void *self)
    {
        auto *d = static_cast<Private *>(self);
        const pa_timing_info *timing = success ? pa_stream_get_timing_info(stream) : nullptr;
        d->ahead = timing ? double(timing->sink_usec) / 1e6 : 0;
        if (!d->stopping)
            for (const Held &piece : d->held)
                d->receiver(piece.samples.data(), int(piece.samples.size() / channels),
                            piece.time + d->ahead);
        d->held.clear();
    }
    static void latencyUpdated(pa_stream *stream, void *self)
    {
        // Outputs change their latency as players come and go; the newest applies.
        auto *d = static_cast<Private *>(self);
        const pa_timing_info *timing = pa_stream_get_timing_info(stream);
        if (d->ahead >= 0 && timing)
            d->ahead = double(timing->sink_usec) / 1e6;
    }

    bool receiverRunning = false;

    // Once, and only for a stream that ran and was not being stopped.
    void reportFailure()
    {
        if (stopping || failureReported || !receiverRunning || !onFailure)
            return;
        failureReported = true;
        onFailure(QStringLiteral("The system sound recording stopped: %1.").arg(contextError()));
    }
    QString contextError() const
    {
        return QString::fromUtf8(pa_strerror(pa_context_errno(context)));
    }
};

SystemAudioCapture::SystemAudioCapture(Receiver receiver, FailureHandler onFailure)
    : d(std::make_unique<Private>())
{
    d->receiver = std::move(receiver);
    d->onFailure = std::move(onFailure);
}

SystemAudioCapture::~SystemAudioCapture()
{
    stop();
}

namespace {
// A recording without the system's sound is refused; the message leads with that, then says
// why.
QString unavailable(const QString &why)
{
    return QStringLiteral("System audio is not available. ") + why;
}
} // namespace

QString SystemAudioCapture::start()
{
    d->loop = pa_threaded_mainloop_new();
    if (!d->loop)
        return unavailable(QStringLiteral("The sound server could not be reached."));
    d->context = pa_context_new(pa_threaded_mainloop_get_api(d->loop), "LumoMediaPlayer");
    pa_context_set_state_callback(d->context, &Private::contextState, d.get());
    if (pa_context_connect(d->context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        const QString why = d->contextError();
        stop();
        return unavailable(QStringLiteral("The sound server could not be reached: %1.").arg(why));
    }
    pa_threaded_mainloop_lock(d->loop);
    if (pa_threaded_mainloop_start(d->loop) < 0) {
        pa_threaded_mainloop_unlock(d->loop);
        stop();
        return unavailable(QStringLiteral("The sound server could not be reached."));
    }
    auto fail = [this](const QString &why) {
        pa_threaded_mainloop_unlock(d->loop);
        stop();
        return why;
    };
    for (;;) {
        const pa_context_state_t state = pa_context_get_state(d->context);
        if (state == PA_CONTEXT_READY)
            break;
        if (!PA_CONTEXT_IS_GOOD(state))
            return fail(unavailable(QStringLiteral("The sound server could not be reached: %1.")
                                        .arg(d->contextError())));
        pa_threaded_mainloop_wait(d->loop);
    }

    auto recordingFailed = [this, &fail] {
        return fail(unavailable(
            QStringLiteral("The system sound could not be recorded: %1.").arg(d->contextError())));
    };
    const pa_sample_spec format {PA_SAMPLE_FLOAT32LE, sampleRate, channels};
    d->stream = pa_stream_new(d->context, "Recording", &format, nullptr);
    if (!d->stream)
        return recordingFailed();
    pa_stream_set_state_callback(d->stream, &Private::streamState, d.get());
    pa_stream_set_read_callback(d->stream, &Private::streamRead, d.get());
    pa_stream_set_latency_update_callback(d->stream, &Private::latencyUpdated, d.get());
    pa_buffer_attr attributes {};
    attributes.maxlength = uint32_t(-1);
    attributes.fragsize = uint32_t(sampleRate * channels * sizeof(float) * fragmentMs / 1000);
    if (pa_stream_connect_record(
            d->stream, "@DEFAULT_MONITOR@", &attributes,
            pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE))
        < 0)
        return recordingFailed();
    for (;;) {
        const pa_stream_state_t state = pa_stream_get_state(d->stream);
        if (state == PA_STREAM_READY)
            break;
        if (!PA_STREAM_IS_GOOD(state))
            return recordingFailed();
        pa_threaded_mainloop_wait(d->loop);
    }
    d->receiverRunning = true;
    pa_threaded_mainloop_unlock(d->loop);
    return {};
}

void SystemAudioCapture::stop()
{
    if (!d->loop)
        return;
    pa_threaded_mainloop_lock(d->loop);
    d->stopping = true;
    if (d->stream) {
        pa_stream_set_read_callback(d->stream, nullptr, nullptr);
        pa_stream_set_state_callback(d->stream, nullptr, nullptr);
        pa_stream_set_latency_update_callback(d->stream, nullptr, nullptr);
        pa_stream_disconnect(d->stream);
        pa_stream_unref(d->stream);
        d->stream = nullptr;
    }
    if (d->context) {
        pa_context_set_state_callback(d->context, nullptr, nullptr);
        pa_context_disconnect(d->context);
        pa_context_unref(d->context);
        d->context = nullptr;
    }
    pa_threaded_mainloop_unlock(d->loop);
    pa_threaded_mainloop_stop(d->loop);
    pa_threaded_mainloop_free(d->loop);
    d->loop = nullptr;
}
