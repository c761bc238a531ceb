#pragma once
// A running capture: the pictures the player surface draws, taken thirty times a second, and the
// system sound, encoded into the writer on the capture thread. Made and driven on the main
// thread; it reports back there. The main thread never waits for the encoder, except when the
// stream is destroyed while it still records, so that the file is finished and nothing is lost.
#include "playercapturewriter.h"
#include "surface/playerrecordingsurface.h"

#include <QObject>
#include <QPointer>
#include <QThread>
#include <memory>

class CaptureWorker;

class PlayerCaptureStream final : public QObject
{
    Q_OBJECT

public:
    struct Configuration
    {
        QString path;
        QSize outputSize;
        // The part of the surface's pictures that is recorded, in device pixels from the top.
        QRect crop;
        const char *preset = PlayerCaptureWriter::defaultPreset;
    };

    explicit PlayerCaptureStream(QObject *parent = nullptr);
    ~PlayerCaptureStream() override;

    // Opens the writer and the system sound on the capture thread, then takes the surface's
    // pictures. Reports started or startFailed.
    void start(PlayerRecordingSurface *surface, const Configuration &configuration);
    // Stops taking pictures and sound and finishes the file; reports finished.
    void stop();
    // What the writer counted; complete once finished was reported.
    PlayerCaptureWriter::Statistics statistics() const;

Q_SIGNALS:
    void started();
    void startFailed(const QString &why);
    void finished(const QString &path, const QString &error);
    // The system sound ended by itself while recording.
    void stoppedWithError(const QString &why);

private:
    void detachSurface();

    QThread m_thread;
    CaptureWorker *m_worker = nullptr;
    PlayerRecordingSurface *m_surface = nullptr;
    QPointer<QWidget> m_view;
    bool m_open = false;
};
