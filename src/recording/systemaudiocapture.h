#pragma once
// Reads what the computer is playing: the default output's monitor on the sound server
// (PulseAudio, or PipeWire's pulse server), 48 kHz stereo float. Samples arrive on the sound
// server's thread, stamped with the capture clock.
#include <QString>
#include <functional>
#include <memory>

class SystemAudioCapture final
{
public:
    static constexpr int sampleRate = 48'000;
    static constexpr int channels = 2;
    // How much sound each delivery holds, at most: small, so that stamps stay close.
    static constexpr int fragmentMs = 10;

    // Interleaved samples, and the capture-clock time of the first of them.
    using Receiver = std::function<void(const float *samples, int frameCount, double time)>;
    // The server ended the stream; called once, on the server's thread.
    using FailureHandler = std::function<void(const QString &why)>;

    SystemAudioCapture(Receiver receiver, FailureHandler onFailure);
    ~SystemAudioCapture();
    SystemAudioCapture(const SystemAudioCapture &) = delete;
    SystemAudioCapture &operator=(const SystemAudioCapture &) = delete;

    // Connects and starts reading; empty on success, otherwise why it could not.
    QString start();
    // Stops reading; no samples arrive after it returns.
    void stop();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
