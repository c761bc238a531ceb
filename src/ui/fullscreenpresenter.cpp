#include "fullscreenpresenter.h"

#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "recording/playerrecorder.h"
#include "surface/playerrecordingsurface.h"
#include "surface/playersurfaceregistry.h"

#include <QApplication>
#include <QCursor>
#include <QVariantAnimation>
#include <QWidget>
#include <QWindow>

FullScreenPresenter::FullScreenPresenter(PlayerModel &model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_fade(new QVariantAnimation(this))
{
    m_controlsHideTask.setSingleShot(true);
    // Precise: a coarse timer may fire up to 5 % before the delay.
    m_controlsHideTask.setTimerType(Qt::PreciseTimer);
    m_controlsHideTask.setInterval(controlsHideDelayMs);
    connect(&m_controlsHideTask, &QTimer::timeout, this, [this] { setControlsVisible(false); });
    m_cursorHideTask.setSingleShot(true);
    m_cursorHideTask.setTimerType(Qt::PreciseTimer);
    m_cursorHideTask.setInterval(pointerHideDelayMs);
    connect(&m_cursorHideTask, &QTimer::timeout, this,
            &FullScreenPresenter::hidePointerIfStillWanted);
    connect(m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_controlsOpacity = value.toDouble();
        Q_EMIT controlsOpacityChanged();
    });
    connect(&PlayerNotifications::shared(), &PlayerNotifications::playerMouseMoved, this,
            &FullScreenPresenter::pointerMoved);
    connect(&m_model, &PlayerModel::isPlayingChanged, this, &FullScreenPresenter::playingChanged);
}

FullScreenPresenter::~FullScreenPresenter()
{
    showPointer();
}

void FullScreenPresenter::setRecorder(PlayerRecorder *recorder)
{
    if (m_recorder)
        m_recorder->disconnect(this);
    m_recorder = recorder;
    if (m_recorder)
        connect(m_recorder, &PlayerRecorder::stateChanged, this,
                &FullScreenPresenter::recorderStateChanged);
}

void FullScreenPresenter::setDelays(int controlsHideDelay, int pointerHideDelay)
{
    m_controlsHideTask.setInterval(controlsHideDelay);
    m_cursorHideTask.setInterval(pointerHideDelay);
}

bool FullScreenPresenter::recorderIdle() const
{
    return !m_recorder || m_recorder->state() == PlayerRecordingState::idle;
}

void FullScreenPresenter::willEnterFullScreen()
{
    m_isFullScreen = true;
    setControlsVisible(false, false);
    if (!recorderIdle())
        setApplicationTitleBarHiddenForRecording(true);
    Q_EMIT fullScreenChanged();
}

void FullScreenPresenter::didExitFullScreen()
{
    m_isFullScreen = false;
    setControlsVisible(false, false);
    m_controlsHideTask.stop();
    setApplicationTitleBarHiddenForRecording(false);
    Q_EMIT fullScreenChanged();
}

void FullScreenPresenter::showFullScreenControls()
{
    m_controlsHideTask.stop();
    setControlsVisible(true);
    // Every movement restarts the count, also while the pointer rests over the bar.
    m_controlsHideTask.start();
}

void FullScreenPresenter::setControlsVisible(bool visible, bool animated)
{
    const bool changed = visible != m_controlsVisible;
    m_controlsVisible = visible;
    const double target = visible ? 1 : 0;
    if (changed || m_fade->endValue().toDouble() != target) {
        m_fade->stop();
        if (animated) {
            m_fade->setDuration(visible ? controlsShowMs : controlsHideMs);
            m_fade->setEasingCurve(visible ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
            m_fade->setStartValue(m_controlsOpacity);
            m_fade->setEndValue(target);
            m_fade->start();
        } else {
            m_fade->setEndValue(target);
            m_controlsOpacity = target;
            Q_EMIT controlsOpacityChanged();
        }
    }
    if (changed)
        Q_EMIT controlsVisibleChanged();
}

void FullScreenPresenter::pointerMoved(QWindow *window)
{
    // The pointer hidden until it moves: this is the move.
    showPointer();
    QWidget *keyWindow = QApplication::activeWindow();
    const bool fromKeyWindow = window && keyWindow && keyWindow->windowHandle() == window;
    if (fromKeyWindow)
        scheduleCursorHideIfNeeded(keyWindow);
    // While a recording is prepared, runs or stops, the floating bar stays away.
    if (m_isFullScreen && recorderIdle() && (fromKeyWindow || (!window && !keyWindow)))
        showFullScreenControls();
}

void FullScreenPresenter::scheduleCursorHideIfNeeded(QWidget *window)
{
    cancelCursorHide();
    if (m_model.isPlaying() && isMouseOverPlayer(window)) {
        m_cursorWindow = window;
        m_cursorHideTask.start();
    }
}

void FullScreenPresenter::cancelCursorHide()
{
    m_cursorHideTask.stop();
    m_cursorWindow = nullptr;
}

void FullScreenPresenter::hidePointerIfStillWanted()
{
    QWidget *window = m_cursorWindow;
    m_cursorWindow = nullptr;
    if (!window || !m_model.isPlaying() || QApplication::activeWindow() != window
        || !isMouseOverPlayer(window) || m_pointerHidden)
        return;
    QGuiApplication::setOverrideCursor(Qt::BlankCursor);
    m_pointerHidden = true;
}

void FullScreenPresenter::showPointer()
{
    if (!m_pointerHidden)
        return;
    m_pointerHidden = false;
    QGuiApplication::restoreOverrideCursor();
}

bool FullScreenPresenter::isMouseOverPlayer(QWidget *window)
{
    PlayerRecordingSurface *surface = PlayerSurfaceRegistry::shared().surface();
    if (!surface || !window)
        return false;
    QWidget *view = surface->recordingView();
    if (!view || view->window() != window || !view->isVisible())
        return false;
    return view->rect().contains(view->mapFromGlobal(QCursor::pos()));
}

void FullScreenPresenter::playingChanged()
{
    QWidget *keyWindow = QApplication::activeWindow();
    if (m_model.isPlaying() && keyWindow)
        scheduleCursorHideIfNeeded(keyWindow);
    else
        cancelCursorHide();
}

void FullScreenPresenter::recorderStateChanged()
{
    if (!recorderIdle()) {
        m_controlsHideTask.stop();
        setControlsVisible(false);
        setApplicationTitleBarHiddenForRecording(true);
    } else {
        // Shown again in or out of full screen.
        setApplicationTitleBarHiddenForRecording(false);
    }
}

void FullScreenPresenter::setApplicationTitleBarHiddenForRecording(bool hidden)
{
    if (!QApplication::activeWindow())
        return;
    if (hidden && !m_isFullScreen)
        return;
    // The window system draws the title bar and drops it in full screen; what is kept here is
    // whether the buttons must stay away.
    if (hidden == m_titleBarHidden)
        return;
    m_titleBarHidden = hidden;
    Q_EMIT titleBarHiddenChanged();
}
