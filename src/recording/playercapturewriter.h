#pragma once
// Turns captured pictures and system sound into one MP4 file: H.264 (High) and AAC. The file is
// written in fragments while recording, so a recording cut short still plays up to its last
// second; finishing rewrites it with its index first (Mp4Finisher). Used on one thread only (the
// capture thread); nothing in it waits for another thread.
#include <QImage>
#include <QRect>
#include <QString>
#include <memory>

#include "recordererror.h"

class PlayerCaptureWriter final
{
public:
    static constexpr int frameRate = 30;
    // How far past its time a late picture may still be placed after repeated frames.
    static constexpr int lateSlotsAfterFiller = frameRate / 4;
    static constexpr int keyFrameInterval = 60;
    static constexpr int audioSampleRate = 48'000;
    static constexpr int audioChannels = 2;
    static constexpr qint64 audioBitRate = 192'000;
    // The x264 preset that keeps up with 1080p at 30 frames a second on two cores while a video
    // plays (measured with lumo-bench-recording).
    static constexpr const char *defaultPreset = "superfast";
    // Sound that strays further than this from the capture clock is realigned. Sound servers
    // deliver in bursts as long as their buffers (a few hundred milliseconds when idle), so
    // only a real stall or a clock jump goes this far.
    static constexpr double audioRealignSeconds = 0.2;

    struct Statistics
    {
        qint64 framesWritten = 0;
        // Of them, pictures that were new, not repeats of the one before or black.
        qint64 picturesWritten = 0;
        // Frame slots of the 30-per-second timeline that had no picture in time; the picture
        // before them fills them.
        qint64 framesDropped = 0;
        // New pictures left out because they came too late for the timeline (the encoder was
        // behind): the file keeps the length of the recording instead.
        qint64 picturesTooLate = 0;
        qint64 audioSamplesWritten = 0;
        // How far the sound runs ahead of the pictures (behind when negative), in seconds, as
        // last measured over half a second.
        double audioOffset = 0;
        // Silence inserted or sound cut after the start to keep the sound on the capture clock,
        // in seconds.
        double audioRealigned = 0;
        // Where the first sound was placed: silence before it when positive, sound cut when
        // negative, in seconds.
        double audioLeadIn = 0;
    };

    // The finished file's path, or what went wrong.
    struct Outcome
    {
        QString path;
        QString error;
    };

    // Opens path (replacing a file already there) for a picture of size pixels. Null on failure,
    // with the reason in *error.
    static std::unique_ptr<PlayerCaptureWriter>
    create(const QString &path, QSize size, QString *error, const char *preset = defaultPreset);
    ~PlayerCaptureWriter();
    PlayerCaptureWriter(const PlayerCaptureWriter &) = delete;
    PlayerCaptureWriter &operator=(const PlayerCaptureWriter &) = delete;

    QString outputPath() const;
    QSize size() const;
    // True once the first picture has started the file's timeline.
    bool sessionStarted() const;
    const Statistics &statistics() const;

    // The part crop of a picture (pixels; RGB32, ARGB32 or RGBA8888, rows from the bottom when
    // bottomUp), taken at time seconds on the capture clock, fitted into the output size with its
    // shape kept (black bars around it when the shapes differ). The
    // first picture starts the session. False when the picture was not written.
    bool appendVideo(const QImage &picture, const QRect &crop, bool bottomUp, double time);
    // The last picture again in every free slot up to time: a still scene at the frame rate.
    // Pictures that come later for those slots go after them.
    bool repeatLast(double time);
    // A black picture at time, for moments when there is nothing to record from.
    bool appendBlack(double time);
    // Interleaved stereo samples whose first was heard at time; dropped before the session.
    void appendAudio(const float *samples, int frameCount, double time);

    // True once writing or encoding failed; nothing more is written, and finish says why.
    bool failed() const;

    // Completes the file. Without a single picture the writing is cancelled instead and the
    // failure is noFramesCaptured. After a failure the file is left as far as it was written
    // and the outcome's error says what happened and where it is.
    Outcome finish();
    // Stops writing and removes the file.
    void cancel();

private:
    struct Private;
    explicit PlayerCaptureWriter(std::unique_ptr<Private> d);
    std::unique_ptr<Private> d;
};
