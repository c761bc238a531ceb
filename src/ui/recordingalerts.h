#pragma once
// The two alerts a recording ends in: "Recording Error" while the recorder holds an error, and
// "Recording Saved" with the way to the file once a recording was saved. Dismissing either
// clears what it showed.
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <functional>

class PlayerRecordingController;
class QWidget;

class RecordingAlerts final : public QObject
{
    Q_OBJECT

public:
    // Shows a file in the platform's file manager.
    using RevealHandler = std::function<void(const QString &path)>;

    RecordingAlerts(PlayerRecordingController &recorder, QWidget *parent);

    QMessageBox *errorAlert() const { return m_errorAlert; }
    QMessageBox *savedAlert() const { return m_savedAlert; }
    void setRevealHandler(RevealHandler handler) { m_reveal = std::move(handler); }

    // The saved alert's button: the platform's name for its file manager.
    static QString revealButtonText();
    // Selects the file in the desktop's file manager, or opens its folder.
    static void revealInFileManager(const QString &path);

private:
    void updateErrorAlert();
    void updateSavedAlert();

    PlayerRecordingController &m_recorder;
    QWidget *m_parent = nullptr;
    QPointer<QMessageBox> m_errorAlert;
    QPointer<QMessageBox> m_savedAlert;
    RevealHandler m_reveal = &RecordingAlerts::revealInFileManager;
};
