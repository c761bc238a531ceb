// XMLTV times and tvg-shift, read exactly.
#include "guide/xmltvtime.h"

#include <QDateTime>
#include <QTest>
#include <QTimeZone>

namespace {
qint64 utc(int year, int month, int day, int hour, int minute, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), QTimeZone::utc())
        .toSecsSinceEpoch();
}
} // namespace

class TestXmltvTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void times_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("seconds"); // -1: unreadable

        QTest::newRow("minutes, no zone: UTC")
            << QByteArray("202411251830") << utc(2024, 11, 25, 18, 30);
        QTest::newRow("seconds") << QByteArray("20241125183045") << utc(2024, 11, 25, 18, 30, 45);
        QTest::newRow("zone east")
            << QByteArray("20241125183000 +0100") << utc(2024, 11, 25, 17, 30);
        QTest::newRow("zone west, no space")
            << QByteArray("20241125183000-0530") << utc(2024, 11, 26, 0, 0);
        QTest::newRow("several spaces")
            << QByteArray("202411251830   +0000") << utc(2024, 11, 25, 18, 30);
        QTest::newRow("zone over midnight")
            << QByteArray("20240101003000 +0200") << utc(2023, 12, 31, 22, 30);
        QTest::newRow("leap day") << QByteArray("20240229120000") << utc(2024, 2, 29, 12, 0);
        QTest::newRow("no leap day") << QByteArray("20230229120000") << qint64(-1);
        QTest::newRow("31 April") << QByteArray("20240431120000") << qint64(-1);
        QTest::newRow("hour 24") << QByteArray("20240101240000") << qint64(-1);
        QTest::newRow("minute 60") << QByteArray("20240101126000") << qint64(-1);
        QTest::newRow("too short") << QByteArray("2024010112") << qint64(-1);
        QTest::newRow("letters") << QByteArray("2024O1011200") << qint64(-1);
        QTest::newRow("zone without sign") << QByteArray("20240101120000 0100") << qint64(-1);
        QTest::newRow("zone too short") << QByteArray("20240101120000 +01") << qint64(-1);
        QTest::newRow("trailing words") << QByteArray("20240101120000 +0100 CET") << qint64(-1);
        QTest::newRow("trailing spaces only") << QByteArray("20240101120000  ") << qint64(-1);
        QTest::newRow("empty") << QByteArray() << qint64(-1);
    }

    void times()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, seconds);
        const std::optional<qint64> read = XmltvTime::parse(text);
        if (seconds < 0)
            QVERIFY2(!read, qPrintable(QString::number(read.value_or(0))));
        else
            QCOMPARE(read, seconds);
    }
};

QTEST_GUILESS_MAIN(TestXmltvTime)
#include "tst_xmltvtime.moc"
