#include "programmerows.h"

#include <QDateTime>
#include <QLocale>

namespace ProgrammeRows {

QString dayHeading(const QDate &day, const QDate &today)
{
    const qint64 days = today.daysTo(day);
    if (days == -1)
        return QStringLiteral("Yesterday");
    if (days == 0)
        return QStringLiteral("Today");
    if (days == 1)
        return QStringLiteral("Tomorrow");
    return QLocale(QLocale::English).toString(day, QStringLiteral("dddd d MMMM"));
}

qint64 listedFrom(const std::optional<CatchupSettings> &catchup, qint64 now)
{
    if (catchup)
        return now - qint64(catchup->windowDays()) * 86400;
    return QDateTime::fromSecsSinceEpoch(now).date().startOfDay().toSecsSinceEpoch();
}

QList<Row> rows(const QList<ProgrammeGuide::Programme> &programmes,
                const std::optional<CatchupSettings> &catchup, qint64 now)
{
    const qint64 from = listedFrom(catchup, now);
    const QDate today = QDateTime::fromSecsSinceEpoch(now).date();
    QList<Row> list;
    QDate day;
    for (qsizetype i = 0; i < programmes.size(); ++i) {
        const ProgrammeGuide::Programme &programme = programmes[i];
        if (programme.stop <= from)
            continue;
        const QDateTime start = QDateTime::fromSecsSinceEpoch(programme.start);
        if (start.date() != day) {
            day = start.date();
            list.append({true, dayHeading(day, today), -1, When::future, false});
        }
        Row row;
        row.text = start.toString(QStringLiteral("HH:mm")) + QStringLiteral("  ") + programme.title;
        row.programme = i;
        row.when = programme.stop <= now ? When::past
            : programme.start <= now     ? When::onAir
                                         : When::future;
        row.archived
            = row.when != When::future && catchup && catchup->archives(programme.start, now);
        list.append(row);
    }
    return list;
}

} // namespace ProgrammeRows
