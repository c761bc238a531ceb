#include "playerrecordingcontroller.h"

#include "capturegeometry.h"
#include "playercapturestream.h"
#include "recordingnames.h"
#include "recordingpanel.h"
#include "recordingsavedialog.h"
#include "screencapturepermission.h"
#include "surface/playerrecordingsurface.h"
#include "surface/playersurfaceregistry.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QScreen>
#include <QStandardPaths>
#include <QWidget>
#include <mutex>
#include <thread>

namespace {

// What the capture can see: the visible top-level windows and the screens, in global
// coordinates.
CaptureGeometry::ShareableContent shareableContent()
{
    CaptureGeometry::ShareableContent content;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && !widget->isMinimized() && widget->windowHandle())
            content.windows.append({quint64(widget->winId()), QRectF(widget->geometry())});
    }
    for (const QScreen *screen : QGuiApplication::screens())
        content.displays.append(QRectF(screen->geometry()));
    return content;
}

} // namespace

struct PlayerRecordingController::RecoveryMailbox
{
    std::mutex mutex;
    PlayerRecordingController *controller = nullptr;

    void deliver(const QList<RecordingJournal::Recovery> &recoveries)
    {
        // Held while posting: the controller closes the box before it goes.
        const std::lock_guard lock(mutex);
        if (controller) {
            QMetaObject::invokeMethod(
                controller,
                [controller = controller, recoveries] { controller->reportRecoveries(recoveries); },
                Qt::QueuedConnection);
        }
    }
};

PlayerRecordingController::PlayerRecordingController(QObject *parent)
    : PlayerRecorder(parent)
    , m_permission(ScreenCapturePermission::platform())
    , m_saveFileChooser(&RecordingSaveDialog::choose)
    , m_journalFolder(RecordingJournal::defaultFolder())
    , m_recoveryMailbox(std::make_shared<RecoveryMailbox>())
{
    m_recoveryMailbox->controller = this;
}

PlayerRecordingController::~PlayerRecordingController()
{
    {
        const std::lock_guard lock(m_recoveryMailbox->mutex);
        m_recoveryMailbox->controller = nullptr;
    }
    delete m_recordingPanel;
}

void PlayerRecordingController::recoverUnfinishedRecordings()
{
    // Finishing reads and writes whole files: never on the main thread. Quitting meanwhile is
    // safe, as a finished copy replaces its recording only once it is complete.
    std::thread([mailbox = m_recoveryMailbox, folder = m_journalFolder] {
        mailbox->deliver(RecordingJournal::recoverAll(folder));
    }).detach();
}

void PlayerRecordingController::reportRecoveries(
    const QList<RecordingJournal::Recovery> &recoveries)
{
    for (const RecordingJournal::Recovery &recovery : recoveries) {
        if (recovery.finished)
            setLastSavedURL(recovery.path);
        else if (!recovery.error.isEmpty())
            presentRecordingError(RecorderErrors::recoveryFailure(recovery.path, recovery.error));
    }
}

void PlayerRecordingController::setPermission(std::shared_ptr<ScreenCapturePermission> permission)
{
    m_permission = std::move(permission);
}

void PlayerRecordingController::setSaveFileChooser(SaveFileChooser chooser)
{
    m_saveFileChooser = std::move(chooser);
}

void PlayerRecordingController::setState(PlayerRecordingState state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

void PlayerRecordingController::setErrorMessage(const std::optional<QString> &message)
{
    if (message == m_errorMessage)
        return;
    m_errorMessage = message;
    Q_EMIT errorMessageChanged();
}

void PlayerRecordingController::setLastSavedURL(const std::optional<QString> &path)
{
    if (path == m_lastSavedURL)
        return;
    m_lastSavedURL = path;
    Q_EMIT lastSavedURLChanged();
}

void PlayerRecordingController::setRequiresPermission(bool required)
{
    if (required == m_requiresPermission)
        return;
    m_requiresPermission = required;
    Q_EMIT requiresScreenRecordingPermissionChanged();
}

void PlayerRecordingController::setDuration(double duration)
{
    if (duration == m_duration)
        return;
    m_duration = duration;
    Q_EMIT durationChanged();
}

bool PlayerRecordingController::requestScreenRecordingPermissionIfNeeded()
{
    if (m_permission->preflight() || m_permission->request()) {
        setRequiresPermission(false);
        return true;
    }
    setRequiresPermission(true);
    setErrorMessage(RecorderErrors::permissionNeededMessage());
    return false;
}

PlayerRecordingController::SaveRequest
PlayerRecordingController::saveRequest(PlayerRecordingQuality quality, const QDateTime &now)
{
    return {QStringLiteral("Save Recording"), RecordingNames::proposedFileName(quality, now),
            QStandardPaths::standardLocations(QStandardPaths::MoviesLocation).value(0)};
}

void PlayerRecordingController::startRecording(PlayerRecordingQuality quality)
{
    if (!requestScreenRecordingPermissionIfNeeded())
        return;
    QWidget *window = QApplication::activeWindow();
    PlayerRecordingSurface *surface = PlayerSurfaceRegistry::shared().surface();
    if (!window || !surface) {
        setErrorMessage(RecorderErrors::surfaceUnavailableMessage());
        return;
    }
    QWidget *view = surface->recordingView();
    const QRectF rectInView = surface->recordingRectInView();
    // The surface in window coordinates, y upward as the capture area is reckoned.
    const QRectF inWindow(QPointF(view->mapTo(view->window(), QPoint(0, 0))) + rectInView.topLeft(),
                          rectInView.size());
    const QRectF surfaceInWindow
        = CaptureGeometry::flippedInWindow(inWindow, view->window()->height());

    const std::optional<QString> path
        = m_saveFileChooser(window, saveRequest(quality, QDateTime::currentDateTime()));
    if (!path || path->isEmpty())
        return;

    setState(PlayerRecordingState::preparing);
    setErrorMessage(std::nullopt);
    setRequiresPermission(false);

    // The recorded window is the one the surface is in; the key window chose the recording.
    QPointer<QWidget> recordedWindow(view->window());
    const double scale = recordedWindow->devicePixelRatioF();
    QTimer::singleShot(0, this, [this, recordedWindow, surfaceInWindow, scale, quality, path] {
        beginCapture(recordedWindow, surfaceInWindow, scale, quality, *path);
    });
}

void PlayerRecordingController::beginCapture(QPointer<QWidget> window, QRectF surfaceInWindow,
                                             double scale, PlayerRecordingQuality quality,
                                             const QString &path)
{
    auto fail = [this, path](const QString &description) {
        QFile::remove(path);
        if (m_stream)
            m_stream.release()->deleteLater();
        setState(PlayerRecordingState::idle);
        presentRecordingError(description);
    };
    PlayerRecordingSurface *surface = PlayerSurfaceRegistry::shared().surface();
    if (!window || !surface)
        return fail(RecorderErrors::description(RecorderError::playerWindowNotFound));
    m_recordedWindow = window;

    const auto planned = CaptureGeometry::plan(shareableContent(), quint64(window->winId()),
                                               surfaceInWindow, scale, quality);
    if (const auto *error = std::get_if<RecorderError>(&planned))
        return fail(RecorderErrors::description(*error));
    const auto &plan = std::get<CaptureGeometry::CapturePlan>(planned);

    retireStream();
    m_stream = std::make_unique<PlayerCaptureStream>();
    m_stream->keepJournalEntry(RecordingJournal::Entry::begin(m_journalFolder, path));
    connect(m_stream.get(), &PlayerCaptureStream::started, this,
            &PlayerRecordingController::didStartRecording);
    // A file that can no longer be written ends the recording at once, with the reason.
    connect(m_stream.get(), &PlayerCaptureStream::writeFailed, this,
            &PlayerRecordingController::stopRecording);
    connect(m_stream.get(), &PlayerCaptureStream::startFailed, this, fail);
    connect(m_stream.get(), &PlayerCaptureStream::stoppedWithError, this,
            &PlayerRecordingController::streamDidStop);
    // The pictures come from the surface itself, cut to the area the plan found on the
    // display: what the surface draws is what is recorded.
    m_stream->start({path, plan.outputSize, m_preset});
}

void PlayerRecordingController::didStartRecording()
{
    setState(PlayerRecordingState::recording);
    m_startedAt.emplace();
    m_startedAt->start();
    setDuration(0);

    delete m_durationTimer;
    m_durationTimer = new QTimer(this);
    m_durationTimer->setInterval(durationTimerMs);
    connect(m_durationTimer, &QTimer::timeout, this, &PlayerRecordingController::tickDuration);
    m_durationTimer->start();

    delete m_recordingPanel;
    m_recordingPanel = new RecordingPanel;
    connect(m_recordingPanel, &RecordingPanel::stopRequested, this,
            &PlayerRecordingController::stopFromPanel);
    // The main screen is the one the player is on.
    m_recordingPanel->present(m_recordedWindow ? m_recordedWindow->screen()
                                               : QGuiApplication::primaryScreen());
}

void PlayerRecordingController::tickDuration()
{
    if (!m_startedAt)
        return;
    setDuration(double(m_startedAt->nsecsElapsed()) / 1e9);
    if (m_recordingPanel)
        m_recordingPanel->durationLabel()->setText(RecordingNames::panelText(m_duration));
}

void PlayerRecordingController::stopRecording()
{
    if (m_state != PlayerRecordingState::recording)
        return;
    setState(PlayerRecordingState::stopping);
    if (m_recordingPanel) {
        // The panel's own button may be what asked; it goes once that click is done.
        m_recordingPanel->hide();
        m_recordingPanel->deleteLater();
        m_recordingPanel = nullptr;
    }
    delete m_durationTimer;
    m_durationTimer = nullptr;

    PlayerCaptureStream *stream = m_stream.get();
    if (!stream) {
        finishStop({}, {});
        return;
    }
    connect(stream, &PlayerCaptureStream::finished, this, &PlayerRecordingController::finishStop);
    stream->stop();
}

void PlayerRecordingController::finishStop(const QString &path, const QString &error)
{
    if (m_stream) {
        m_lastStatistics = m_stream->statistics();
        // Not from inside its own signal.
        m_stream.release()->deleteLater();
    }
    setState(PlayerRecordingState::idle);
    m_startedAt.reset();
    if (!error.isEmpty())
        setErrorMessage(error);
    else if (!path.isEmpty())
        setLastSavedURL(path);
}

void PlayerRecordingController::retireStream()
{
    // A stream whose sound ended by itself still holds its file: it is finished on the capture
    // thread, and the stream goes once that is done.
    if (!m_stream)
        return;
    PlayerCaptureStream *old = m_stream.release();
    old->disconnect(this);
    old->setParent(this);
    if (old->isOpen()) {
        connect(old, &PlayerCaptureStream::finished, old, &QObject::deleteLater);
        old->stop();
    } else {
        old->deleteLater();
    }
}

void PlayerRecordingController::presentRecordingError(const QString &description)
{
    // Where no permission can be refused, a "Permission denied" from the disk is just that.
    const RecorderErrors::Presentation presentation = m_permission->canBeRefused()
        ? RecorderErrors::present(description)
        : RecorderErrors::Presentation {description, false};
    setRequiresPermission(presentation.requiresPermission);
    setErrorMessage(presentation.message);
}

void PlayerRecordingController::streamDidStop(const QString &why)
{
    // Only the message and the phase: the panel, the timer and the capture stay as they are,
    // and the panel's stop button no longer does anything.
    setErrorMessage(why);
    setState(PlayerRecordingState::idle);
}
