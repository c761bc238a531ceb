#include "catchupaddress.h"

#include "sourceaddress.h"
#include "urlparts.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>

namespace CatchupAddress {

namespace {

QString padded(int value, int width = 2)
{
    return QStringLiteral("%1").arg(value, width, 10, QLatin1Char('0'));
}

// "{duration:60}" → 60; nothing unless a positive whole number follows the prefix.
std::optional<qint64> divisorAfter(QStringView name, QStringView prefix)
{
    if (!name.startsWith(prefix))
        return std::nullopt;
    bool ok = false;
    const qint64 divisor = name.sliced(prefix.size()).toLongLong(&ok);
    if (!ok || divisor <= 0)
        return std::nullopt;
    return divisor;
}

std::optional<QString> valueOf(QStringView name, bool dollar, const Moments &moments,
                               const QDateTime &localStart, QStringView catchupId)
{
    const qint64 end = moments.start + moments.duration;
    const qint64 offset = std::max<qint64>(0, moments.now - moments.start);
    if (dollar) {
        if (name == u"start")
            return QString::number(moments.start);
        if (name == u"end")
            return QString::number(end);
        if (name == u"now" || name == u"timestamp")
            return QString::number(moments.now);
        if (name == u"duration")
            return QString::number(moments.duration);
        if (name == u"offset")
            return QString::number(offset);
        return std::nullopt;
    }
    if (name == u"utc")
        return QString::number(moments.start);
    if (name == u"utcend")
        return QString::number(end);
    if (name == u"lutc")
        return QString::number(moments.now);
    if (name == u"duration")
        return QString::number(moments.duration);
    if (name == u"catchup-id")
        return catchupId.toString();
    if (const std::optional<qint64> divisor = divisorAfter(name, u"duration:"))
        return QString::number(std::max<qint64>(0, moments.duration) / *divisor);
    if (const std::optional<qint64> divisor = divisorAfter(name, u"offset:"))
        return QString::number(offset / *divisor);
    if (name.size() == 1) {
        const QDate date = localStart.date();
        const QTime time = localStart.time();
        switch (name[0].unicode()) {
        case u'Y':
            return padded(date.year(), 4);
        case u'm':
            return padded(date.month());
        case u'd':
            return padded(date.day());
        case u'H':
            return padded(time.hour());
        case u'M':
            return padded(time.minute());
        case u'S':
            return padded(time.second());
        default:
            break;
        }
    }
    return std::nullopt;
}

// Flussonic's archive forms of a channel address; see pattern().
std::optional<QString> flussonicPattern(const QUrl &channel, bool transportStream)
{
    const QString path = channel.path(QUrl::FullyEncoded);
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return std::nullopt;
    const QString last = path.sliced(slash + 1);
    QString folder = path.first(slash);
    QString file;
    if (last == u"mpegts") {
        file = QStringLiteral("timeshift_abs-${start}.ts");
    } else if (last == u"index.m3u8") {
        file = QStringLiteral("timeshift_rel-{offset:1}.m3u8");
    } else if (last.endsWith(u".m3u8") && last.size() > 5) {
        file = last.first(last.size() - 5) + QStringLiteral("-timeshift_rel-{offset:1}.m3u8");
    } else {
        // A stream file of the channel's folder is replaced; a bare path is the channel's id.
        if (!last.contains(u'.'))
            folder = path.endsWith(u'/') ? path.chopped(1) : path;
        file = transportStream ? QStringLiteral("timeshift_abs-${start}.ts")
                               : QStringLiteral("timeshift_rel-{offset:1}.m3u8");
    }
    if (folder.isEmpty())
        return std::nullopt;
    QUrl archive = channel;
    archive.setQuery(QString());
    QString text = archive.adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment)
                       .toString(QUrl::FullyEncoded);
    text += folder + u'/' + file;
    if (channel.hasQuery())
        text += u'?' + channel.query(QUrl::FullyEncoded);
    return text;
}

// Xtream Codes: http(s)://HOST[:PORT]/[live/]USER/PASS/ID[.EXT].
std::optional<QString> xcPattern(const QUrl &channel)
{
    QStringList segments = channel.path(QUrl::FullyEncoded).split(u'/', Qt::SkipEmptyParts);
    if (segments.size() == 4 && segments.first() == u"live")
        segments.removeFirst();
    if (segments.size() != 3)
        return std::nullopt;
    QString id = segments[2];
    const bool hls = id.endsWith(u".m3u8");
    if (const qsizetype dot = id.lastIndexOf(u'.'); dot > 0)
        id.truncate(dot);
    if (id.isEmpty())
        return std::nullopt;
    const QString root = channel
                             .adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment
                                       | QUrl::RemoveUserInfo)
                             .toString(QUrl::FullyEncoded);
    return root + QStringLiteral("/timeshift/") + segments[0] + u'/' + segments[1]
        + QStringLiteral("/{duration:60}/{Y}-{m}-{d}:{H}-{M}/") + id
        + (hls ? QStringLiteral(".m3u8") : QStringLiteral(".ts"));
}

} // namespace

Moments momentsOf(const CatchupSettings &settings, const Programme &programme, qint64 now,
                  qint32 shiftSeconds)
{
    Moments moments;
    moments.start = programme.start + settings.correctionSeconds - shiftSeconds;
    moments.duration = std::max<qint64>(0, programme.stop - programme.start);
    moments.now = now;
    return moments;
}

std::optional<QString> pattern(const CatchupSettings &settings, const QUrl &channel)
{
    const QString address = channel.toString(QUrl::FullyEncoded);
    switch (settings.mode) {
    case CatchupMode::standard:
        if (settings.source.isEmpty())
            return std::nullopt;
        return settings.source;
    case CatchupMode::append:
        if (settings.source.isEmpty())
            return std::nullopt;
        return address + settings.source;
    case CatchupMode::shift:
        return address + (channel.hasQuery() ? u'&' : u'?')
            + QStringLiteral("utc={utc}&lutc={lutc}");
    case CatchupMode::flussonic:
        return flussonicPattern(channel, false);
    case CatchupMode::flussonicTs:
        return flussonicPattern(channel, true);
    case CatchupMode::xc:
        return xcPattern(channel);
    case CatchupMode::vod:
        return settings.source.isEmpty() ? QStringLiteral("{catchup-id}") : settings.source;
    }
    return std::nullopt;
}

QString expand(QStringView pattern, const Moments &moments, QStringView catchupId)
{
    const QDateTime localStart = QDateTime::fromSecsSinceEpoch(moments.start);
    QString out;
    out.reserve(pattern.size() + 32);
    qsizetype i = 0;
    while (i < pattern.size()) {
        const bool dollar = pattern[i] == u'$' && i + 1 < pattern.size() && pattern[i + 1] == u'{';
        const qsizetype open = dollar ? i + 1 : i;
        if (pattern[open] == u'{') {
            const qsizetype close = pattern.indexOf(u'}', open + 1);
            if (close > open) {
                const QStringView name = pattern.sliced(open + 1, close - open - 1);
                if (const std::optional<QString> value
                    = valueOf(name, dollar, moments, localStart, catchupId)) {
                    out += *value;
                    i = close + 1;
                    continue;
                }
            }
        }
        // An unknown "${name}" is not read again as "{name}".
        const qsizetype next = dollar ? open + 1 : i + 1;
        out += pattern.sliced(i, next - i);
        i = next;
    }
    return out;
}

std::optional<QUrl> of(const CatchupSettings &settings, const QUrl &channel,
                       const Programme &programme, qint64 now, qint32 shiftSeconds)
{
    if (settings.mode == CatchupMode::vod && programme.catchupId.isEmpty())
        return std::nullopt;
    const std::optional<QString> made = pattern(settings, channel);
    if (!made)
        return std::nullopt;
    const QString text
        = expand(*made, momentsOf(settings, programme, now, shiftSeconds), programme.catchupId);
    const std::optional<QUrl> url = UrlParts::parse(text);
    if (!url || url->isRelative() || !SourceAddress::isPlayableChannelAddress(*url, false))
        return std::nullopt;
    return url;
}

Reach reachOf(QStringView pattern)
{
    for (const QStringView whole : {u"{utcend}", u"${end}", u"{duration}", u"{duration:"}) {
        if (pattern.contains(whole))
            return Reach::whole;
    }
    for (const QStringView second : {u"{utc}", u"${start}", u"{S}", u"${offset}", u"{offset:1}"}) {
        if (pattern.contains(second))
            return Reach::fromStartToSecond;
    }
    return Reach::fromStartToMinute;
}

} // namespace CatchupAddress
