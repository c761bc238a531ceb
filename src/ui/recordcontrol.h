#pragma once
// The control bar's record control. Idle, it is a menu offering the two recording qualities;
// while a recording is prepared, a small spinner; while one runs, a stop button. It cannot be
// used while a recording is prepared or finished.
#include "recording/playerrecorder.h"

#include <QPointer>
#include <QWidget>

class BusyIndicator;
class ControlButton;
class QMenu;

class RecordControl final : public QWidget
{
    Q_OBJECT

public:
    enum class Face { menu, preparing, stop };

    explicit RecordControl(QWidget *parent = nullptr);

    // None until a recorder is attached; the control is then disabled.
    void setRecorder(PlayerRecorder *recorder);

    Face face() const;
    QMenu *qualityMenu() const { return m_menu; }

private:
    void refresh();
    void choose(PlayerRecordingQuality quality);

    QPointer<PlayerRecorder> m_recorder;
    ControlButton *m_menuButton = nullptr;
    ControlButton *m_stopButton = nullptr;
    BusyIndicator *m_spinner = nullptr;
    QMenu *m_menu = nullptr;
};
