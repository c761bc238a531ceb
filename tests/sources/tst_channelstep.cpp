// Where next and previous channel go among the rows shown.
#include "sources/channelstep.h"

#include <QTest>

class TestChannelStep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void targets_data()
    {
        QTest::addColumn<int>("from"); // -1: the playing channel is not shown
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("target"); // -1: nowhere

        QTest::newRow("next") << 0 << 1 << 3 << 1;
        QTest::newRow("previous") << 2 << -1 << 3 << 1;
        QTest::newRow("next wraps to the first") << 2 << 1 << 3 << 0;
        QTest::newRow("previous wraps to the last") << 0 << -1 << 3 << 2;
        QTest::newRow("not shown, next: the first") << -1 << 1 << 3 << 0;
        QTest::newRow("not shown, previous: the last") << -1 << -1 << 3 << 2;
        QTest::newRow("one row stays") << 0 << 1 << 1 << 0;
        QTest::newRow("no rows") << -1 << 1 << 0 << -1;
        QTest::newRow("a row beyond the list counts as not shown") << 7 << 1 << 3 << 0;
        QTest::newRow("no step") << 1 << 0 << 3 << -1;
        QTest::newRow("a long step wraps whole turns") << 1 << -7 << 3 << 0;
    }

    void targets()
    {
        QFETCH(int, from);
        QFETCH(int, step);
        QFETCH(int, rows);
        QFETCH(int, target);
        const std::optional<int> start = from < 0 ? std::nullopt : std::optional(from);
        const std::optional<int> expected = target < 0 ? std::nullopt : std::optional(target);
        QCOMPARE(ChannelStep::target(start, step, rows), expected);
    }
};

QTEST_GUILESS_MAIN(TestChannelStep)
#include "tst_channelstep.moc"
