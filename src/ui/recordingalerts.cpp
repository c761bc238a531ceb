#include "recordingalerts.h"

#include "recording/playerrecordingcontroller.h"
#include "recording/recordererror.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

RecordingAlerts::RecordingAlerts(PlayerRecordingController &recorder, QWidget *parent)
    : QObject(parent)
    , m_recorder(recorder)
    , m_parent(parent)
{
    connect(&recorder, &PlayerRecordingController::errorMessageChanged, this,
            &RecordingAlerts::updateErrorAlert);
    connect(&recorder, &PlayerRecordingController::lastSavedURLChanged, this,
            &RecordingAlerts::updateSavedAlert);
}

QString RecordingAlerts::revealButtonText()
{
#ifdef Q_OS_MACOS
    return QStringLiteral("Show in Finder");
#else
    return QStringLiteral("Show in File Manager");
#endif
}

void RecordingAlerts::revealInFileManager(const QString &path)
{
#ifndef Q_OS_MACOS
    // The freedesktop file-manager interface selects the file; without it the folder opens.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList {QUrl::fromLocalFile(path).toString()} << QString();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 3000);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return;
#endif
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

void RecordingAlerts::updateErrorAlert()
{
    const std::optional<QString> message = m_recorder.errorMessage();
    if (!message) {
        if (m_errorAlert)
            m_errorAlert->close();
        return;
    }
    if (m_errorAlert) {
        m_errorAlert->setText(*message);
        return;
    }
    auto *alert
        = new QMessageBox(QMessageBox::Warning, QStringLiteral("Recording Error"),
                          message->isEmpty() ? RecorderErrors::unknownErrorMessage() : *message,
                          QMessageBox::NoButton, m_parent);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    QPushButton *settings = nullptr;
    if (m_recorder.requiresScreenRecordingPermission())
        settings
            = alert->addButton(QStringLiteral("Open System Settings"), QMessageBox::ActionRole);
    alert->addButton(QMessageBox::Ok);
    // However it is dismissed, the error is gone; the box closes before a button's own signal
    // would arrive, so the choice is read from the box.
    connect(alert, &QMessageBox::finished, this, [this, alert, settings] {
        if (settings && alert->clickedButton() == settings)
            QDesktopServices::openUrl(QUrl(QStringLiteral(
                "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture")));
        m_recorder.setErrorMessage(std::nullopt);
    });
    m_errorAlert = alert;
    alert->open();
}

void RecordingAlerts::updateSavedAlert()
{
    const std::optional<QString> path = m_recorder.lastSavedURL();
    if (!path) {
        if (m_savedAlert)
            m_savedAlert->close();
        return;
    }
    if (m_savedAlert)
        return;
    auto *alert = new QMessageBox(QMessageBox::Information, QStringLiteral("Recording Saved"),
                                  QStringLiteral("The MP4 recording was saved."),
                                  QMessageBox::NoButton, m_parent);
    // The file, named under the text, so that it can be found without the file manager too.
    alert->setInformativeText(QFileInfo(*path).fileName());
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    QPushButton *reveal = alert->addButton(revealButtonText(), QMessageBox::ActionRole);
    alert->addButton(QStringLiteral("OK"), QMessageBox::RejectRole);
    // The box closes on any button before the button's own signal would arrive, so the choice
    // is read from the box once it is done.
    connect(alert, &QMessageBox::finished, this, [this, alert, reveal] {
        const std::optional<QString> saved = m_recorder.lastSavedURL();
        if (alert->clickedButton() == reveal && saved)
            m_reveal(*saved);
        m_recorder.setLastSavedURL(std::nullopt);
    });
    m_savedAlert = alert;
    alert->open();
}
