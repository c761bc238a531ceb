#include "playbackfailure.h"

#include <QRegularExpression>

namespace PlaybackFailure {

QString reason(const QStringList &messages, bool networkItem)
{
    // FFmpeg names the status and its phrase: "HTTP error 404 Not Found".
    static const QRegularExpression httpStatus(
        QStringLiteral(R"(HTTP error (\d{3})(?: ([^\r\n]*\S))?)"));
    bool openFailed = false;
    // The most telling message wins, whatever its place: the cause comes before mpv's summary.
    for (const QString &message : messages) {
        if (const QRegularExpressionMatch match = httpStatus.match(message); match.hasMatch()) {
            const QString phrase = match.captured(2);
            return phrase.isEmpty()
                ? QStringLiteral("The server answered %1.").arg(match.captured(1))
                : QStringLiteral("The server answered %1 %2.").arg(match.captured(1), phrase);
        }
    }
    for (const QString &message : messages) {
        if (message.contains(u"No such file or directory"))
            return QStringLiteral("The file was not found.");
        if (message.contains(u"Permission denied"))
            return QStringLiteral("The file cannot be read: permission denied.");
        if (message.contains(u"Failed to recognize file format"))
            return QStringLiteral("This is not a media file the player can read.");
        if (message.contains(u"Connection refused"))
            return QStringLiteral("The server refused the connection.");
        if (message.contains(u"Failed to resolve hostname"))
            return QStringLiteral("The server's name was not found.");
        if (message.contains(u"Connection reset"))
            return QStringLiteral("The server closed the connection.");
        if (message.contains(u"timed out", Qt::CaseInsensitive))
            return QStringLiteral("The server did not answer.");
        openFailed = openFailed || message.startsWith(u"Failed to open");
    }
    // A server that takes the connection and then says nothing leaves no message of its own.
    if (networkItem && openFailed)
        return QStringLiteral("The server did not answer.");
    return {};
}

QStringList ownMessages(const QStringList &messages, const QString &address)
{
    for (qsizetype i = messages.size() - 1; i >= 0; --i) {
        const QString &message = messages.at(i);
        if (message.startsWith(u"Failed to open ") && !message.contains(address))
            return messages.mid(i + 1);
    }
    return messages;
}

} // namespace PlaybackFailure
