#include "captureworker.h"

#include "captureclock.h"
#include "systemaudiocapture.h"

#include <QTimer>
#include <cmath>

CaptureWorker::CaptureWorker() = default;

CaptureWorker::~CaptureWorker()
{
    // A stream torn down while starting still leaves no half-made file behind.
    close();
}

QString CaptureWorker::open(const QString &path, QSize outputSize, const char *preset)
{
    QString error;
    m_writer = PlayerCaptureWriter::create(path, outputSize, &error, preset);
    if (!m_writer)
        return error;
    m_audio = std::make_unique<SystemAudioCapture>(
        [this](const float *samples, int frameCount, double time) {
            offerSound(samples, frameCount, time);
        },
        [this](const QString &why) { Q_EMIT soundFailed(why); });
    error = m_audio->start();
    if (!error.isEmpty()) {
        m_audio.reset();
        m_writer->cancel();
        m_writer.reset();
        return error;
    }
    m_ticker = new QTimer(this);
    m_ticker->setTimerType(Qt::PreciseTimer);
    m_ticker->setSingleShot(true);
    connect(m_ticker, &QTimer::timeout, this, &CaptureWorker::tick);
    m_firstTick = CaptureClock::now();
    m_ticker->start(0);
    return {};
}

void CaptureWorker::offerPicture(const CapturedPicture &picture, QRect crop, double time)
{
    const std::lock_guard lock(m_mutex);
    m_pictures.push_back({picture, crop, time});
    if (m_pictures.size() > pendingPicturesLimit)
        m_pictures.pop_front();
    m_hasPicture = true;
}

void CaptureWorker::offerNothing()
{
    const std::lock_guard lock(m_mutex);
    // A frozen last picture would pass for a still scene; black says nothing is there.
    m_pictures.clear();
    m_hasPicture = false;
}

void CaptureWorker::offerSound(const float *samples, int frameCount, double time)
{
    const std::lock_guard lock(m_mutex);
    m_sound.push_back({std::vector<float>(samples, samples + qsizetype(frameCount) * 2), time});
    m_soundFrames += frameCount;
    const auto limit = qint64(audioBacklogSeconds * PlayerCaptureWriter::audioSampleRate);
    while (m_soundFrames > limit && m_sound.size() > 1) {
        m_soundFrames -= qint64(m_sound.front().samples.size() / 2);
        m_sound.pop_front();
    }
}

void CaptureWorker::tick()
{
    if (!m_writer)
        return;
    const double now = CaptureClock::now();
    std::deque<PendingPicture> pictures;
    bool hasPicture = false;
    std::deque<AudioChunk> sound;
    {
        const std::lock_guard lock(m_mutex);
        hasPicture = m_hasPicture;
        pictures.swap(m_pictures);
        sound.swap(m_sound);
        m_soundFrames = 0;
    }
    // New pictures go where they were meant to be seen. Slots that waited long enough without
    // one show the last picture again, and nothing but black when there is nothing to record.
    // Before the first picture nothing is recorded.
    for (const PendingPicture &pending : pictures)
        m_writer->appendVideo(pending.picture.image, pending.crop, pending.picture.bottomUp,
                              pending.time);
    if (pictures.empty()) {
        if (hasPicture)
            m_writer->repeatLast(now - repeatDelaySeconds);
        else if (m_writer->sessionStarted())
            m_writer->appendBlack(now);
    }
    for (const AudioChunk &chunk : sound)
        m_writer->appendAudio(chunk.samples.data(), int(chunk.samples.size() / 2), chunk.time);
    {
        const std::lock_guard lock(m_mutex);
        m_statistics = m_writer->statistics();
    }
    if (m_writer->failed()) {
        Q_EMIT writeFailed();
        return;
    }
    // The next tick on the 30-per-second grid; a whole millisecond interval would drift off it.
    const double sinceFirst = CaptureClock::now() - m_firstTick;
    const double next = (std::floor(sinceFirst * PlayerCaptureWriter::frameRate) + 1)
        / PlayerCaptureWriter::frameRate;
    m_ticker->start(std::max(0, int(std::lround((next - sinceFirst) * 1000))));
}

PlayerCaptureWriter::Outcome CaptureWorker::close()
{
    delete m_ticker;
    m_ticker = nullptr;
    if (m_audio) {
        m_audio->stop();
        m_audio.reset();
    }
    if (!m_writer)
        return {};
    // The sound heard up to now still belongs in the file.
    std::deque<AudioChunk> sound;
    {
        const std::lock_guard lock(m_mutex);
        sound.swap(m_sound);
    }
    for (const AudioChunk &chunk : sound)
        m_writer->appendAudio(chunk.samples.data(), int(chunk.samples.size() / 2), chunk.time);
    // The picture lasts as long as the sound, up to the stop.
    m_writer->repeatLast(CaptureClock::now());
    PlayerCaptureWriter::Outcome outcome = m_writer->finish();
    {
        const std::lock_guard lock(m_mutex);
        m_statistics = m_writer->statistics();
    }
    m_writer.reset();
    return outcome;
}

PlayerCaptureWriter::Statistics CaptureWorker::statistics() const
{
    const std::lock_guard lock(m_mutex);
    return m_statistics;
}
