#pragma once
// Takes the video frame mpv shows now, at its own size, through a client handle of its own, so
// that a thread other than the window's can read it: the window's thread does no work for it.
#include <QImage>
#include <atomic>

struct mpv_handle;

class MpvFrameGrabber final
{
public:
    // Grabs from core through a weak client of it (one that does not keep the player alive),
    // made by the first grab.
    explicit MpvFrameGrabber(mpv_handle *core);
    // Must run before core is destroyed, and not while grab() runs.
    ~MpvFrameGrabber();
    MpvFrameGrabber(const MpvFrameGrabber &) = delete;
    MpvFrameGrabber &operator=(const MpvFrameGrabber &) = delete;

    // The frame shown now, without subtitles, as smart reframe searches it
    // (FaceDetectors::sampleOf); null when there is none, mpv refuses, or stop() was called.
    // Waits for mpv; one thread at a time.
    QImage grab();
    // Makes a grab under way, and every later one, give up at once. Any thread.
    void stop() { m_stopped = true; }

private:
    bool connectToCore();

    mpv_handle *m_core = nullptr;
    mpv_handle *m_client = nullptr;
    std::atomic<bool> m_stopped {false};
    quint64 m_requests = 0;
};
