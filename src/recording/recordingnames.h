#pragma once
// The names and numbers a recording shows: the proposed file name, the elapsed time and the
// encoder's bit rate.
#include "playerrecorder.h"

#include <QDateTime>
#include <QString>

namespace RecordingNames {

// "Lumo HD Recording 2026-11-16 01-20-38.mp4", or "Lumo Normal Recording …".
QString proposedFileName(PlayerRecordingQuality quality, const QDateTime &now);
// Whole minutes and seconds, "%02d:%02d"; minutes go past 59 (3,905 s is 65:05).
QString formatDuration(double seconds);
// The recording panel's label: "REC  " and the elapsed time.
QString panelText(double seconds);
// The path a recording is written to for the path the user chose: it always ends in ".mp4".
// Another film type typed at the end ("clip.mov") is replaced, since the file is MPEG-4
// whatever its name says; any other name gets ".mp4" added.
QString mp4Path(const QString &chosen);
// Bits per second for a picture of this size: six per pixel, at least 4,000,000.
qint64 averageBitRate(int width, int height);

} // namespace RecordingNames
