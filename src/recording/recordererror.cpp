#include "recordererror.h"

#include <QLocale>
#include <cerrno>

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

QString writeFailure(int errorCode, const QString &detail, const QString &keptPath)
{
    QString what;
    switch (errorCode) {
    case ENOSPC:
    case EDQUOT:
        what = QStringLiteral("The disk is full.");
        break;
    case EFBIG:
        what = QStringLiteral("The recording is larger than this disk allows for one file.");
        break;
    case ENOENT:
    case ESTALE:
        what = QStringLiteral("The recording’s file or its folder was removed.");
        break;
    case EACCES:
    case EPERM:
    case EROFS:
        what = QStringLiteral("The recording’s folder can no longer be written to.");
        break;
    case EIO:
        what = QStringLiteral("The disk could not be written to.");
        break;
    default:
        what = QStringLiteral("The recording could not be written.");
        break;
    }
    QString message = QStringLiteral("%1 (%2)").arg(what, detail);
    if (!keptPath.isEmpty())
        message
            += QStringLiteral(" The recording up to that moment is kept in “%1”.").arg(keptPath);
    return message;
}

QString recoveryFailure(const QString &path, const QString &detail)
{
    return QStringLiteral("A recording cut short could not be finished (%1). It plays as it is "
                          "in “%2”.")
        .arg(detail, path);
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
