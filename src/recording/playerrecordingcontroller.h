#pragma once
// Records exactly the player's picture, with the system sound, into an MP4 file the user names:
// the four phases of a recording, the permission check, the save dialog, starting and stopping
// the capture, the elapsed time and the panel, and the texts a failure shows. Main thread only.
#include "playercapturewriter.h"
#include "playerrecorder.h"
#include "recordingjournal.h"
#include "recordingpanel.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

class PlayerCaptureStream;
class QWidget;
class ScreenCapturePermission;

class PlayerRecordingController final : public PlayerRecorder
{
    Q_OBJECT

public:
    static constexpr int durationTimerMs = 250;

    // What the save dialog shows.
    struct SaveRequest
    {
        QString title;
        QString proposedName;
        // The folder it opens in; empty when the platform has no Movies folder.
        QString directory;
    };
    // Asks where to save; no value when the user cancels.
    using SaveFileChooser
        = std::function<std::optional<QString>(QWidget *parent, const SaveRequest &request)>;

    explicit PlayerRecordingController(QObject *parent = nullptr);
    ~PlayerRecordingController() override;

    PlayerRecordingState state() const override { return m_state; }
    double duration() const { return m_duration; }
    std::optional<QString> errorMessage() const { return m_errorMessage; }
    void setErrorMessage(const std::optional<QString> &message);
    // The file of the last recording that finished well.
    std::optional<QString> lastSavedURL() const { return m_lastSavedURL; }
    void setLastSavedURL(const std::optional<QString> &path);
    bool requiresScreenRecordingPermission() const { return m_requiresPermission; }

    void startRecording(PlayerRecordingQuality quality) override;
    void stopRecording() override;
    // The panel's stop button.
    void stopFromPanel() { stopRecording(); }
    // The recording's text for a failure: where the platform can refuse the capture, a refused
    // permission reads as such.
    void presentRecordingError(const QString &description);
    // The capture ended by itself with this reason.
    void streamDidStop(const QString &why);

    // The panel while a recording runs; null otherwise.
    RecordingPanel *recordingPanel() const { return m_recordingPanel; }
    // What the writer counted in the last recording.
    PlayerCaptureWriter::Statistics lastStatistics() const { return m_lastStatistics; }

    // The dialog's texts for a recording started at now.
    static SaveRequest saveRequest(PlayerRecordingQuality quality, const QDateTime &now);

    void setPermission(std::shared_ptr<ScreenCapturePermission> permission);
    void setSaveFileChooser(SaveFileChooser chooser);
    // The x264 preset; the default is the measured one.
    void setEncoderPreset(const char *preset) { m_preset = preset; }
    // Where recordings under way are noted, to be found again after a crash.
    void setJournalFolder(const QString &folder) { m_journalFolder = folder; }
    // Finishes, off the main thread, the recordings a crash or a power cut left unfinished. A
    // recovered file is announced like a saved one; one that cannot be finished is an error.
    void recoverUnfinishedRecordings();

Q_SIGNALS:
    void durationChanged();
    void errorMessageChanged();
    void lastSavedURLChanged();
    void requiresScreenRecordingPermissionChanged();

private:
    bool requestScreenRecordingPermissionIfNeeded();
    void beginCapture(QPointer<QWidget> window, QRectF surfaceInWindow, double scale,
                      PlayerRecordingQuality quality, const QString &path);
    void didStartRecording();
    void finishStop(const QString &path, const QString &error);
    void setState(PlayerRecordingState state);
    void setRequiresPermission(bool required);
    void setDuration(double duration);
    void tickDuration();
    void retireStream();
    void reportRecoveries(const QList<RecordingJournal::Recovery> &recoveries);

    PlayerRecordingState m_state = PlayerRecordingState::idle;
    double m_duration = 0;
    std::optional<QString> m_errorMessage;
    std::optional<QString> m_lastSavedURL;
    bool m_requiresPermission = false;
    std::unique_ptr<PlayerCaptureStream> m_stream;
    QTimer *m_durationTimer = nullptr;
    std::optional<QElapsedTimer> m_startedAt;
    QPointer<RecordingPanel> m_recordingPanel;
    QPointer<QWidget> m_recordedWindow; // the window being recorded, whose screen shows the panel
    std::shared_ptr<ScreenCapturePermission> m_permission;
    SaveFileChooser m_saveFileChooser;
    const char *m_preset = PlayerCaptureWriter::defaultPreset;
    PlayerCaptureWriter::Statistics m_lastStatistics;
    QString m_journalFolder;
    // Where recoveries post their results while the controller lives.
    struct RecoveryMailbox;
    std::shared_ptr<RecoveryMailbox> m_recoveryMailbox;
};
