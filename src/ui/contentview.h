#pragma once
// The player window's content: the sliding sidebar (network panel over the channel list) beside
// the player column (the player surface over the control bar, which floats over the picture in
// full screen), the notice overlay, the recording alerts, and the window's shape, which follows
// the video. It also takes dropped files and what the command line or the desktop asks to open.
#include "surface/portraitdisplaymode.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

class ChannelList;
class FullScreenPresenter;
class NetworkPanel;
class NowNextOverlay;
class PlayerControlBar;
class PlayerModel;
class PlayerRecorder;
class PlayerRecordingController;
class QGraphicsOpacityEffect;
class RecordingAlerts;
class PlayerSurface;
class QFrame;
class QLabel;
class QVariantAnimation;
class ToastOverlay;
class VolumeIndicator;
class WindowTitleSetter;

class ContentView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int sidebarWidth = 245;
    static constexpr int sidebarAnimationMs = 180;
    // A click on the picture closes the sidebar a little faster.
    static constexpr int sidebarCloseOnClickMs = 160;
    // The address field takes the focus once the sidebar has slid in.
    static constexpr int addressFocusDelayMs = 180;
    // How long the window's size must stay still before its shape is checked again.
    static constexpr int resizeSettleMs = 250;

    explicit ContentView(PlayerModel &model, QWidget *parent = nullptr);

    bool showsSidebar() const { return m_showSidebar; }
    void setShowSidebar(bool show, int durationMs = sidebarAnimationMs);
    PortraitDisplayMode portraitMode() const { return m_portraitMode; }
    void setPortraitMode(PortraitDisplayMode mode);
    bool isFullScreen() const { return m_isFullScreen; }
    void setFullScreen(bool fullScreen);
    // The window left full screen or its maximised state: once its restored size has come, it
    // takes the picture's shape again, within its screen.
    void windowRestored();
    // The recorder the control bar and the full-screen rules follow; the window's own
    // recording controller unless a test puts another in its place.
    void setRecorder(PlayerRecorder *recorder);
    PlayerRecordingController *recordingController() const { return m_recordingController; }
    PlayerRecorder *recorder() const;
    FullScreenPresenter *fullScreen() const { return m_fullScreen; }
    RecordingAlerts *recordingAlerts() const { return m_recordingAlerts; }

    // A file the system or the command line asks to open: it plays under its file name.
    void openURL(const QUrl &url);
    // An address from the command line, as if typed into the sidebar's address field.
    void openAddress(const QString &text);
    // The address field lets the keyboard go to the player (and does not take it on a pending
    // delay).
    void releaseAddressField();
    // Ctrl+L: the address field takes the keyboard, at once when the sidebar is shown, else
    // once the sidebar has slid in.
    void focusAddressField();

    // The shape the window keeps while the user resizes it; empty when it is free.
    QSize aspectConstraint() const { return m_aspectConstraint; }
    // The title, sizes and place of the window, at once; for the window's construction.
    void applyWindowTitleNow();

    PlayerSurface *surface() const { return m_surface; }
    PlayerControlBar *controlBar() const { return m_controlBar; }
    NowNextOverlay *nowNextOverlay() const { return m_nowNext; }
    NetworkPanel *networkPanel() const { return m_networkPanel; }
    ChannelList *channelList() const { return m_channelList; }
    ToastOverlay *toast() const { return m_toast; }
    VolumeIndicator *volumeIndicator() const { return m_volumeIndicator; }
    QWidget *sidebar() const { return m_sidebar; }

Q_SIGNALS:
    void sidebarShownChanged(bool shown);
    void portraitModeChanged(PortraitDisplayMode mode);
    void fullScreenChanged(bool fullScreen);
    void recorderChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void layoutChildren();
    // Tab and Shift+Tab go through the sidebar's and the bar's controls in visual order.
    void orderTabs();
    // The width the sidebar and its divider take once shown; 0 while it is hidden.
    int sidebarColumn() const;
    // Tells the window manager the picture's shape, for resizes made by hand.
    void applyAspectHint();
    void updateChannelSection();
    void updateWindowTitle();
    void updateError();
    // The playing channel's now and next, shown for a while when reveal is set.
    void updateNowNext(bool reveal);
    void applyWindowAspect(double ratio, PortraitDisplayMode mode);
    // The window's size has stopped changing (after a restore, or a resize by hand where no
    // aspect hint keeps the shape): the shape and the screen are checked again.
    void settleWindowShape();
    void updateFloatingBar();

    PlayerModel &m_model;
    QPointer<PlayerRecorder> m_recorder;
    bool m_showSidebar = false;
    bool m_isFullScreen = false;
    PortraitDisplayMode m_portraitMode = PortraitDisplayMode::normal;
    QTimer m_addressFocusTask;
    QTimer m_settleTask;
    bool m_restoring = false; // a restored size is on its way
    QSize m_aspectConstraint;
    QSize m_pictureShape; // the picture's shape the window keeps; empty for none

    double m_sidebarShown = 0; // 0 hidden … 1 fully in, animated
    QVariantAnimation *m_sidebarAnimation = nullptr;
    QWidget *m_sidebar = nullptr;
    NetworkPanel *m_networkPanel = nullptr;
    ChannelList *m_channelList = nullptr;
    QFrame *m_divider = nullptr;
    PlayerSurface *m_surface = nullptr;
    PlayerControlBar *m_controlBar = nullptr;
    NowNextOverlay *m_nowNext = nullptr;
    ToastOverlay *m_toast = nullptr;
    VolumeIndicator *m_volumeIndicator = nullptr;
    QLabel *m_error = nullptr;
    WindowTitleSetter *m_titleSetter = nullptr;
    PlayerRecordingController *m_recordingController = nullptr;
    RecordingAlerts *m_recordingAlerts = nullptr;
    FullScreenPresenter *m_fullScreen = nullptr;
    QGraphicsOpacityEffect *m_barOpacity = nullptr;
};
