#pragma once
// The capture thread's side of a capture stream: it holds the writer and the sound, and thirty
// times a second encodes the newest picture with the sound heard since. Pictures and sound are
// handed over through small mailboxes, never queued without bound.
#include "playercapturewriter.h"
#include "surface/playerrecordingsurface.h"

#include <QObject>
#include <QRect>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

class QTimer;
class SystemAudioCapture;

class CaptureWorker final : public QObject
{
    Q_OBJECT

public:
    // Sound kept for the encoder at most; older sound is let go.
    static constexpr double audioBacklogSeconds = 2;
    // How long a slot waits for a new picture before the last one is repeated in it: pictures
    // reach the tick up to about two frames after the moment they show.
    static constexpr double repeatDelaySeconds = 0.1;
    // Pictures waiting for the encoder at most; a slower encoder loses the oldest.
    static constexpr size_t pendingPicturesLimit = 4;

    CaptureWorker();
    ~CaptureWorker() override;

    // On the capture thread: opens the file and the sound; empty on success.
    QString open(const QString &path, QSize outputSize, const char *preset);
    // On the capture thread: stops the sound and the ticks and finishes the file.
    PlayerCaptureWriter::Outcome close();
    PlayerCaptureWriter::Statistics statistics() const;

    // From any thread: the newest picture, drawn at time, of which the part crop is recorded,
    // replaces the one waiting.
    void offerPicture(const CapturedPicture &picture, QRect crop, double time);
    // From any thread: there is nothing to record from; black is recorded until a picture comes.
    void offerNothing();

Q_SIGNALS:
    void soundFailed(const QString &why);
    // Writing failed; the ticks have stopped, and close says why.
    void writeFailed();

private:
    struct AudioChunk
    {
        std::vector<float> samples;
        double time = 0;
    };

    void tick();
    void offerSound(const float *samples, int frameCount, double time);

    std::unique_ptr<PlayerCaptureWriter> m_writer;
    std::unique_ptr<SystemAudioCapture> m_audio;
    QTimer *m_ticker = nullptr;
    double m_firstTick = 0;

    struct PendingPicture
    {
        CapturedPicture picture;
        QRect crop;
        double time = 0;
    };

    mutable std::mutex m_mutex;
    // Pictures not yet written, oldest first: after a stall the player draws two or three in
    // one tick, and each keeps its own moment.
    std::deque<PendingPicture> m_pictures;
    bool m_hasPicture = false;
    std::deque<AudioChunk> m_sound;
    qint64 m_soundFrames = 0;
    PlayerCaptureWriter::Statistics m_statistics;
};
