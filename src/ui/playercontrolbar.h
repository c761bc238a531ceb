#pragma once
// The row of transport, position, volume, recording and view controls under the player. It
// reads the model and the recorder and calls their operations; the sidebar, the display mode
// and full screen belong to the window, which it asks through signals.
#include "surface/portraitdisplaymode.h"

#include <QWidget>

class ControlButton;
class PlayerModel;
class PlayerRecorder;
class QLabel;
class QFrame;
class QHBoxLayout;
class QMenu;
class QSlider;
class RecordControl;

class PlayerControlBar final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int barHeight = 34;
    // The slider counts in thousandths of a second (position) and of the full volume.
    static constexpr int sliderScale = 1000;

    explicit PlayerControlBar(PlayerModel &model, QWidget *parent = nullptr);

    void setSidebarShown(bool shown);
    void setPortraitMode(PortraitDisplayMode mode);
    void setRecorder(PlayerRecorder *recorder);

    // The symbol of a display mode in the menu.
    static QString displayModeSymbol(PortraitDisplayMode mode);

    bool isSeeking() const { return m_seeking; }
    double seekValue() const { return m_seekValue; }
    QSlider *positionSlider() const { return m_position; }
    QSlider *volumeSlider() const { return m_volume; }
    // In a narrow bar the volume slider lives in this pop-up, opened by the wheel over the mute
    // button or a right click on it.
    bool isVolumeFolded() const { return m_volumeFolded; }
    QFrame *volumePopup() const { return m_volumePopup; }
    void showVolumePopup();
    QMenu *displayModeMenu() const { return m_modeMenu; }
    // The button beside the display modes that offers the audio and subtitle tracks; shown
    // only when there is a choice to make.
    ControlButton *tracksButton() const { return m_tracksButton; }
    QMenu *tracksMenu() const { return m_tracksMenu; }
    RecordControl *recordControl() const { return m_record; }
    // The controls Tab stops on, left to right (hidden ones included: Tab skips them).
    QList<QWidget *> focusableControls() const;

Q_SIGNALS:
    void sidebarToggleRequested();
    // A mouse button went down anywhere on the bar, its controls included.
    void pressed();
    void displayModeChosen(PortraitDisplayMode mode);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Spacing and the volume slider's place for the bar's width.
    void fitWidth();
    // Tab goes through the controls left to right.
    void orderTabs();
    ControlButton *addButton(const QString &symbol, bool prominent, const QString &help);
    void updatePlaying();
    void updateTimes();
    void updateMuted();
    void updateVolume();
    void updateModeMenu();
    void endSeek();
    static void toggleActiveWindowFullScreen();

    PlayerModel &m_model;
    PortraitDisplayMode m_portraitMode = PortraitDisplayMode::normal;
    bool m_seeking = false;
    double m_seekValue = 0;
    bool m_updatingSliders = false;
    bool m_volumeFolded = false;
    int m_wheelTurn = 0;

    ControlButton *m_playPause = nullptr;
    ControlButton *m_sidebar = nullptr;
    QLabel *m_elapsed = nullptr;
    QSlider *m_position = nullptr;
    QLabel *m_remaining = nullptr;
    ControlButton *m_mute = nullptr;
    QSlider *m_volume = nullptr;
    QFrame *m_volumePopup = nullptr;
    QHBoxLayout *m_layout = nullptr;
    RecordControl *m_record = nullptr;
    ControlButton *m_modeButton = nullptr;
    QMenu *m_modeMenu = nullptr;
    ControlButton *m_tracksButton = nullptr;
    QMenu *m_tracksMenu = nullptr;
};
