#pragma once
// What a later launch sends to the running player: its arguments and the folder they are
// relative to, as one line of JSON.
#include <QByteArray>
#include <QStringList>
#include <optional>

struct LaunchMessage
{
    // A line longer than this is refused unread.
    static constexpr qint64 maximumBytes = 1 << 20;

    QStringList arguments;
    QString workingDirectory;

    static QByteArray encode(const LaunchMessage &message);
    // Empty for anything that is not such a line.
    static std::optional<LaunchMessage> decode(const QByteArray &line);

    friend bool operator==(const LaunchMessage &, const LaunchMessage &) = default;
};
