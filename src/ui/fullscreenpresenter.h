#pragma once
// How the player window behaves around full screen and recording: the floating control bar that
// a pointer movement shows in full screen and that hides again by itself, the pointer hidden
// over a playing video, and the window's title-bar buttons hidden while a full-screen recording
// runs. The window's content lays the bar out from what this decides.
#include <QObject>
#include <QPointer>
#include <QTimer>

class PlayerModel;
class PlayerRecorder;
class QVariantAnimation;
class QWidget;
class QWindow;

class FullScreenPresenter final : public QObject
{
    Q_OBJECT

public:
    static constexpr int controlsHideDelayMs = 2500;
    static constexpr int controlsShowMs = 120;
    static constexpr int controlsHideMs = 200;
    static constexpr int pointerHideDelayMs = 2000;
    // The floating bar's distance from the left, right and bottom edges of the player area.
    static constexpr int floatingBarInset = 18;

    explicit FullScreenPresenter(PlayerModel &model, QObject *parent = nullptr);
    ~FullScreenPresenter() override;

    void setRecorder(PlayerRecorder *recorder);
    // Shorter waits for tests; the defaults are the ones above.
    void setDelays(int controlsHideDelay, int pointerHideDelay);

    bool isFullScreen() const { return m_isFullScreen; }
    bool fullScreenControlsVisible() const { return m_controlsVisible; }
    // 0 … 1 while the floating bar fades in or out.
    double controlsOpacity() const { return m_controlsOpacity; }
    bool titleBarHiddenForRecording() const { return m_titleBarHidden; }
    bool isPointerHidden() const { return m_pointerHidden; }
    bool isControlsHidePending() const { return m_controlsHideTask.isActive(); }
    bool isPointerHidePending() const { return m_cursorHideTask.isActive(); }

    void willEnterFullScreen();
    void didExitFullScreen();
    // Shows the floating bar now and hides it again after the delay.
    void showFullScreenControls();
    // (Re)arms hiding the pointer over the player in window.
    void scheduleCursorHideIfNeeded(QWidget *window);
    // Whether the pointer is over the player's video view in window.
    static bool isMouseOverPlayer(QWidget *window);
    // Hides or shows the key window's title-bar buttons; hiding happens only in full screen.
    void setApplicationTitleBarHiddenForRecording(bool hidden);

Q_SIGNALS:
    void fullScreenChanged();
    void controlsVisibleChanged();
    void controlsOpacityChanged();
    void titleBarHiddenChanged();

private:
    void pointerMoved(QWindow *window);
    void playingChanged();
    void recorderStateChanged();
    void setControlsVisible(bool visible, bool animated = true);
    void cancelCursorHide();
    void hidePointerIfStillWanted();
    void showPointer();
    bool recorderIdle() const;

    PlayerModel &m_model;
    QPointer<PlayerRecorder> m_recorder;
    bool m_isFullScreen = false;
    bool m_controlsVisible = false;
    double m_controlsOpacity = 0;
    bool m_titleBarHidden = false;
    bool m_pointerHidden = false;
    QTimer m_controlsHideTask;
    QTimer m_cursorHideTask;
    QPointer<QWidget> m_cursorWindow;
    QVariantAnimation *m_fade = nullptr;
};
