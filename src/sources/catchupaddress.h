#pragma once
// Where a provider's archive holds a past programme of a channel: the address made from the
// channel's address and its catch-up settings, with the programme's moments put in.
#include "catchupsettings.h"

#include <QString>
#include <QStringView>
#include <QUrl>
#include <optional>

namespace CatchupAddress {

// A programme as the guide shows it (the entry's tvg-shift applied), in seconds since the epoch.
struct Programme
{
    qint64 start = 0;
    qint64 stop = 0;
    QString catchupId; // the guide's catchup-id; empty when it has none
};

// The moments the placeholders stand for, in the server's time.
struct Moments
{
    qint64 start = 0; // the programme's start + correction − tvg-shift
    qint64 duration = 0; // stop − start, never below 0
    qint64 now = 0;
};

Moments momentsOf(const CatchupSettings &settings, const Programme &programme, qint64 now,
                  qint32 shiftSeconds);

// The address pattern of the mode, before the placeholders are put in: the channel's address
// (fully encoded) rewritten, or the list's source. Nothing when the mode cannot make one from
// what it has.
std::optional<QString> pattern(const CatchupSettings &settings, const QUrl &channel);

// Every placeholder the rule knows replaced ({utc}, ${start}, {Y}…); others stay as written.
// Date fields are the start's in the local time zone.
QString expand(QStringView pattern, const Moments &moments, QStringView catchupId);

// The programme's archive address; nothing when the channel has no archive for it or the
// result is not a network address.
std::optional<QUrl> of(const CatchupSettings &settings, const QUrl &channel,
                       const Programme &programme, qint64 now, qint32 shiftSeconds);

// How a pattern follows a moment other than the programme's start.
enum class Reach {
    whole, // the address names the end or the duration: the stream holds the programme
    fromStartToSecond, // the stream begins at the start given to the second
    fromStartToMinute, // the stream begins at the start given to the minute
};
Reach reachOf(QStringView pattern);

} // namespace CatchupAddress
