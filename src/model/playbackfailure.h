#pragma once
// Why an item could not be played, in words for the user, read from what the player reported
// while it tried (mpv's warnings and errors): a missing file, something that is no media, the
// server's HTTP status, a refused connection or a server that never answered.
#include <QString>
#include <QStringList>

namespace PlaybackFailure {

inline constexpr qsizetype keptMessages = 24;

// The reason for the failure of an item; empty when the messages tell nothing a user can act
// on. networkItem: the item was asked for over the network (a silent server is then the
// reason when nothing else is said).
QString reason(const QStringList &messages, bool networkItem);

// The messages about the load of address: mpv hands its messages out late, so those of an
// earlier load (an earlier item, or another entry of the same list) may follow the new load.
// Everything up to mpv's "Failed to open" of another address is that load's, and left out.
QStringList ownMessages(const QStringList &messages, const QString &address);

} // namespace PlaybackFailure
