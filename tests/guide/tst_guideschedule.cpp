// A channel's schedule from the programmes read, and now and next at a moment.
#include "guide/guideschedule.h"

#include <QTest>

namespace {
ReadProgramme read(qint64 start, std::optional<qint64> stop, quint32 title)
{
    return {start, stop, title};
}
GuideProgramme shown(qint64 start, qint64 stop, quint32 title)
{
    return {start, stop, title};
}
} // namespace

class TestGuideSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstOfOneStartWinsAndTheRestIsOrdered()
    {
        const std::vector<GuideProgramme> schedule = GuideSchedule::build(
            {read(300, 400, 1), read(100, 200, 2), read(100, 250, 3), read(200, 300, 4)});
        QCOMPARE(schedule,
                 (std::vector<GuideProgramme> {shown(100, 200, 2), shown(200, 300, 4),
                                               shown(300, 400, 1)}));
    }

    void aMissingStopIsTheNextStartAndTheLastIsDropped()
    {
        const std::vector<GuideProgramme> schedule = GuideSchedule::build(
            {read(100, std::nullopt, 1), read(200, 300, 2), read(300, std::nullopt, 3)});
        QCOMPARE(schedule, (std::vector<GuideProgramme> {shown(100, 200, 1), shown(200, 300, 2)}));
    }

    void aStopNotAfterTheStartIsDropped()
    {
        const std::vector<GuideProgramme> schedule
            = GuideSchedule::build({read(100, 100, 1), read(200, 150, 2), read(300, 400, 3)});
        QCOMPARE(schedule, (std::vector<GuideProgramme> {shown(300, 400, 3)}));
        QVERIFY(GuideSchedule::build({}).empty());
    }

    void nowAndNext()
    {
        const std::vector<GuideProgramme> schedule {shown(100, 200, 1), shown(200, 300, 2),
                                                    shown(400, 500, 3)};
        using NowNext = GuideSchedule::NowNext;
        QCOMPARE(GuideSchedule::at(schedule, 150), (NowNext {schedule[0], schedule[1]}));
        // A start belongs to the programme that starts; a stop no longer does.
        QCOMPARE(GuideSchedule::at(schedule, 200), (NowNext {schedule[1], schedule[2]}));
        // In a gap: nothing now, the next is the first that starts after the moment.
        QCOMPARE(GuideSchedule::at(schedule, 350), (NowNext {std::nullopt, schedule[2]}));
        QCOMPARE(GuideSchedule::at(schedule, 50), (NowNext {std::nullopt, schedule[0]}));
        QCOMPARE(GuideSchedule::at(schedule, 450), (NowNext {schedule[2], std::nullopt}));
        QCOMPARE(GuideSchedule::at(schedule, 500), (NowNext {}));
        QCOMPARE(GuideSchedule::at({}, 500), (NowNext {}));
    }

    void overlapsShowTheLatestStartStillRunning()
    {
        // A long programme with a short one inside it.
        const std::vector<GuideProgramme> schedule {shown(100, 400, 1), shown(200, 250, 2),
                                                    shown(400, 500, 3)};
        using NowNext = GuideSchedule::NowNext;
        QCOMPARE(GuideSchedule::at(schedule, 220), (NowNext {schedule[1], schedule[2]}));
        // Once the short one ends the long one is on again; next starts at or after its stop.
        QCOMPARE(GuideSchedule::at(schedule, 300), (NowNext {schedule[0], schedule[2]}));
    }
};

QTEST_GUILESS_MAIN(TestGuideSchedule)
#include "tst_guideschedule.moc"
