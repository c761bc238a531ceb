#pragma once
// The recorder's own failures, their texts, and how any failure text is shown to the user.
#include <QString>

enum class RecorderError {
    playerWindowNotFound,
    playerDisplayNotFound,
    invalidCaptureArea,
    writerConfigurationFailed,
    noFramesCaptured,
};

namespace RecorderErrors {

QString description(RecorderError error);

// Shown when the platform refuses the capture permission before a recording starts.
QString permissionNeededMessage();
// Shown when a failure reads like a refused permission.
QString permissionBlockedMessage();
// Shown when there is no player view to record.
QString surfaceUnavailableMessage();
// The alert's text when a failure came without one.
QString unknownErrorMessage();
// A recording that could not be written on: what happened in plain words for an errno code,
// the system's own detail, and where what was recorded is kept (when anything is).
QString writeFailure(int errorCode, const QString &detail, const QString &keptPath);
// A recording cut short earlier that could not be finished later.
QString recoveryFailure(const QString &path, const QString &detail);

// What the user reads for a failure, and whether it is about a refused permission.
struct Presentation
{
    QString message;
    bool requiresPermission = false;
};
Presentation present(const QString &description);

} // namespace RecorderErrors
