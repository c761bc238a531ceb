#pragma once
// A running capture: the pictures the player surface draws, taken thirty times a second, and the
// system sound, encoded into the writer on the capture thread. Made and driven on the main
// thread; it reports back there. The main thread never waits for the encoder or the disk, except
// when the stream is destroyed before its file is finished (the player quits): then it waits, so
// that the file is finished and nothing is lost.
#include "playercapturewriter.h"
#include "recordingjournal.h"
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
        const char *preset = PlayerCaptureWriter::defaultPreset;
    };

    explicit PlayerCaptureStream(QObject *parent = nullptr);
    ~PlayerCaptureStream() override;

    // Opens the writer and the system sound on the capture thread, then takes the pictures of
    // the registered surface, following it when another view takes its place (black while
    // there is none). Reports started or startFailed.
    void start(const Configuration &configuration);
    // Stops taking pictures and sound and finishes the file on the capture thread; reports
    // finished. Does nothing unless the stream started and was not stopped yet.
    void stop();
    // True from started until stop.
    bool isOpen() const { return m_open; }
    // The journal entry of the stream's file, let go once the file is finished.
    void keepJournalEntry(std::unique_ptr<RecordingJournal::Entry> entry);
    // What the writer counted; complete once finished was reported.
    PlayerCaptureWriter::Statistics statistics() const;

Q_SIGNALS:
    void started();
    void startFailed(const QString &why);
    void finished(const QString &path, const QString &error);
    // The system sound ended by itself while recording.
    void stoppedWithError(const QString &why);
    // The file could not be written on; stop says why.
    void writeFailed();

private:
    void attachSurface(PlayerRecordingSurface *surface);
    void detachSurface();

    QThread m_thread;
    CaptureWorker *m_worker = nullptr;
    PlayerRecordingSurface *m_surface = nullptr;
    QPointer<QWidget> m_view;
    bool m_open = false;
    std::unique_ptr<RecordingJournal::Entry> m_journalEntry;
};
