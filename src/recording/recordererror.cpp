#include "recordererror.h"

#include <QLocale>

namespace RecorderErrors {

QString description(RecorderError error)
{
    switch (error) {
    case RecorderError::playerWindowNotFound:
        return QStringLiteral("The LumoMediaPlayerPro window could not be captured.");
    case RecorderError::playerDisplayNotFound:
        return QStringLiteral("The display containing LumoMediaPlayerPro could not be captured.");
    case RecorderError::invalidCaptureArea:
        return QStringLiteral("The video capture area is invalid.");
    case RecorderError::writerConfigurationFailed:
        return QStringLiteral("The MP4 recording writer could not be configured.");
    case RecorderError::noFramesCaptured:
        return QStringLiteral("No video frames were captured.");
    }
    return {};
}

QString permissionNeededMessage()
{
    return QStringLiteral(
        "LumoMediaPlayerPro needs Screen & System Audio Recording permission to record the player "
        "and its system audio. Enable it in System Settings, then quit and reopen the app.");
}

QString permissionBlockedMessage()
{
    return QStringLiteral(
        "macOS has blocked screen recording permission for LumoMediaPlayerPro. Enable Screen & "
        "System Audio Recording in System Settings, then quit and reopen the app.");
}

QString surfaceUnavailableMessage()
{
    return QStringLiteral("The player surface is not available.");
}

QString unknownErrorMessage()
{
    return QStringLiteral("Unknown recording error.");
}

Presentation present(const QString &description)
{
    // Case folding in the user's own language, as the words are compared in it.
    const QString folded = QLocale().toLower(description);
    for (const char *word : {"tcc", "declined", "permission"}) {
        if (folded.contains(QLatin1String(word)))
            return {permissionBlockedMessage(), true};
    }
    return {description, false};
}

} // namespace RecorderErrors
