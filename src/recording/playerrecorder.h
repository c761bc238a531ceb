#pragma once
// What the window needs of the recorder: its phase, and starting and stopping a recording.
// The recording controller implements it; the control bar and the window only read and call.
#include <QObject>

enum class PlayerRecordingState { idle, preparing, recording, stopping };
enum class PlayerRecordingQuality { normal, hd };

class PlayerRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual PlayerRecordingState state() const = 0;
    virtual void startRecording(PlayerRecordingQuality quality) = 0;
    virtual void stopRecording() = 0;

    // A recording runs from its first frame until the file is finished.
    bool isRecording() const
    {
        return state() == PlayerRecordingState::recording
            || state() == PlayerRecordingState::stopping;
    }

Q_SIGNALS:
    void stateChanged();
};
