// The rows of a channel's programme list: headed by day in local time, from the start of the
// archive window (of today without one), past / on air / to come, and which the archive holds.
#include "ui/programmerows.h"

#include <QDateTime>
#include <QTest>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

// Monday 23 November 2026, 20:30 in Berlin (19:30 UTC).
qint64 berlin(int day, int hour, int minute = 0)
{
    return QDateTime(QDate(2026, 11, day), QTime(hour, minute)).toSecsSinceEpoch();
}

QList<ProgrammeGuide::Programme> hourly(qint64 from, int count)
{
    QList<ProgrammeGuide::Programme> list;
    for (int i = 0; i < count; ++i)
        list.append({u"P%1"_s.arg(i), from + i * 3600, from + (i + 1) * 3600, {}});
    return list;
}

} // namespace

class TestProgrammeRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    void daysAreHeadedInEnglish()
    {
        const QDate today(2026, 11, 25);
        QCOMPARE(ProgrammeRows::dayHeading(today.addDays(-1), today), u"Yesterday"_s);
        QCOMPARE(ProgrammeRows::dayHeading(today, today), u"Today"_s);
        QCOMPARE(ProgrammeRows::dayHeading(today.addDays(1), today), u"Tomorrow"_s);
        QCOMPARE(ProgrammeRows::dayHeading(QDate(2026, 11, 23), today), u"Monday 23 November"_s);
        QCOMPARE(ProgrammeRows::dayHeading(QDate(2026, 11, 28), today), u"Saturday 28 November"_s);
    }

    void withoutArchiveTheListBeginsToday()
    {
        const qint64 now = berlin(23, 20, 30);
        // From 22:00 the day before to 21:00 the day after, an hour each.
        const QList<ProgrammeRows::Row> rows
            = ProgrammeRows::rows(hourly(berlin(22, 22), 48), std::nullopt, now);
        QCOMPARE(ProgrammeRows::listedFrom(std::nullopt, now), berlin(23, 0));
        // The programme from 23:00 to midnight ends at today's start: left out.
        QVERIFY(rows.first().isDay);
        QCOMPARE(rows.first().text, u"Today"_s);
        QCOMPARE(rows[1].text, u"00:00  P2"_s);
        qsizetype tomorrow = -1;
        int onAir = 0;
        for (qsizetype i = 0; i < rows.size(); ++i) {
            if (rows[i].isDay && rows[i].text == u"Tomorrow")
                tomorrow = i;
            if (!rows[i].isDay) {
                QVERIFY(!rows[i].archived);
                if (rows[i].when == ProgrammeRows::When::onAir) {
                    ++onAir;
                    QCOMPARE(rows[i].text, u"20:00  P22"_s);
                }
            }
        }
        QCOMPARE(onAir, 1);
        QVERIFY(tomorrow > 0);
        QCOMPARE(rows[tomorrow + 1].text, u"00:00  P26"_s);
        QCOMPARE(rows.last().text, u"21:00  P47"_s);
        QCOMPARE(rows.last().when, ProgrammeRows::When::future);
    }

    void theArchiveWindowReachesBackItsDays()
    {
        const qint64 now = berlin(23, 20, 30);
        CatchupSettings catchup;
        catchup.days = 2;
        // Hourly from Friday 18:00.
        const QList<ProgrammeRows::Row> rows
            = ProgrammeRows::rows(hourly(berlin(20, 18), 80), catchup, now);
        QCOMPARE(ProgrammeRows::listedFrom(catchup, now), now - 2 * 86400);
        // Saturday 20:30 is two days back: the 20:00 programme ends inside the window, but it
        // began before it, so the archive no longer holds it.
        QCOMPARE(rows[0].text, u"Saturday 21 November"_s);
        QCOMPARE(rows[1].text, u"20:00  P26"_s);
        QVERIFY(!rows[1].archived);
        QCOMPARE(rows[1].when, ProgrammeRows::When::past);
        QCOMPARE(rows[2].text, u"21:00  P27"_s);
        QVERIFY(rows[2].archived);
        bool sawYesterday = false;
        for (const ProgrammeRows::Row &row : rows) {
            sawYesterday = sawYesterday || (row.isDay && row.text == u"Yesterday");
            if (!row.isDay && row.when == ProgrammeRows::When::onAir)
                QVERIFY(row.archived); // it can be played from its start
            if (!row.isDay && row.when == ProgrammeRows::When::future)
                QVERIFY(!row.archived);
        }
        QVERIFY(sawYesterday);
    }

    void daysFollowDaylightSaving()
    {
        // Sunday 25 October 2026 has 25 hours in Berlin: the day's rows stay under one heading.
        const qint64 from = QDateTime(QDate(2026, 10, 25), QTime(0, 0)).toSecsSinceEpoch();
        const QList<ProgrammeRows::Row> rows
            = ProgrammeRows::rows(hourly(from, 26), std::nullopt, from + 3600);
        QCOMPARE(rows[0].text, u"Today"_s);
        QCOMPARE(rows[3].text, u"02:00  P2"_s);
        QCOMPARE(rows[4].text, u"02:00  P3"_s);
        QCOMPARE(rows[25].text, u"23:00  P24"_s);
        QCOMPARE(rows[26].text, u"Tomorrow"_s);
    }
};

QTEST_GUILESS_MAIN(TestProgrammeRows)
#include "tst_programmerows.moc"
