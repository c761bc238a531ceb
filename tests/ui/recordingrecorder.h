#pragma once
// A recorder whose phase the test sets at will and which records what it is asked; the real
// recorder cannot be held in its preparing or stopping phase on demand.
#include "recording/playerrecorder.h"

#include <QList>

class RecordingRecorder final : public PlayerRecorder
{
public:
    PlayerRecordingState state() const override { return m_state; }
    void startRecording(PlayerRecordingQuality quality) override { starts.append(quality); }
    void stopRecording() override { ++stops; }

    void setState(PlayerRecordingState state)
    {
        m_state = state;
        Q_EMIT stateChanged();
    }

    QList<PlayerRecordingQuality> starts;
    int stops = 0;

private:
    PlayerRecordingState m_state = PlayerRecordingState::idle;
};
