#include "model/transportscripts.h"

#include <QTest>
#include <limits>

class TestTransportScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statements()
    {
        QCOMPARE(TransportScripts::toggle(), "lumoToggle();");
        QCOMPARE(TransportScripts::skip(-30), "lumoSkip(-30);");
        QCOMPARE(TransportScripts::skip(5), "lumoSkip(5);");
        QCOMPARE(TransportScripts::skip(2.5), "lumoSkip(2.5);");
        QCOMPARE(TransportScripts::setMuted(true), "lumoSetMuted(true);");
        QCOMPARE(TransportScripts::setMuted(false), "lumoSetMuted(false);");
    }

    void volumeIsClampedForThePage()
    {
        QCOMPARE(TransportScripts::setVolume(0.42), "lumoSetVolume(0.42);");
        QCOMPARE(TransportScripts::setVolume(1.5), "lumoSetVolume(1);");
        QCOMPARE(TransportScripts::setVolume(-2), "lumoSetVolume(0);");
        QCOMPARE(TransportScripts::setVolume(std::numeric_limits<double>::quiet_NaN()),
                 "lumoSetVolume(0);");
    }

    void numbersReadBackExactly()
    {
        for (double value : {0.1, 1.0 / 3, 1e-7, 123456.789, -0.0001})
            QCOMPARE(TransportScripts::number(value).toDouble(), value);
        QCOMPARE(TransportScripts::number(std::numeric_limits<double>::infinity()), "0");
    }
};

QTEST_GUILESS_MAIN(TestTransportScripts)
#include "tst_transportscripts.moc"
