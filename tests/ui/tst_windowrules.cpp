// The window's shape and size rules, and the control bar's time texts.
#include "ui/timetext.h"
#include "ui/windowaspecthint.h"
#include "ui/windowfit.h"
#include "ui/windowshape.h"
#include "ui/windowsizes.h"

#include <QTest>
#include <cmath>
#include <limits>

class TestWindowRules : public QObject
{
    Q_OBJECT

private:
    static QSizeF resized(const WindowShape::Change &change)
    {
        const auto *size = std::get_if<QSizeF>(&change);
        return size ? *size : QSizeF(-1, -1);
    }

private Q_SLOTS:
    void aWideVideoShapesTheWindowAndLeavesRoomForTheControlBar()
    {
        const QSizeF size
            = resized(WindowShape::change(16.0 / 9.0, PortraitDisplayMode::normal, 1000));
        // 1,000 / 1.777… + 34.
        QCOMPARE(size.width(), 1000.0);
        QCOMPARE(size.height(), 596.5);
    }

    void everyPortraitModeGivesAPortraitWindow()
    {
        for (PortraitDisplayMode mode : PortraitDisplayModes::allCases) {
            if (mode == PortraitDisplayMode::normal)
                continue;
            // The video's own ratio does not matter in a portrait mode.
            for (double ratio : {16.0 / 9.0, 4.0 / 3.0, 0.5}) {
                const QSizeF size = resized(WindowShape::change(ratio, mode, 520));
                QCOMPARE(size.width(), 520.0);
                // 520 / 0.5625 + 34 = 958.4…
                QVERIFY2(qAbs(size.height() - 958.4) < 0.05,
                         qPrintable(QString::number(size.height())));
            }
        }
    }

    void theMinimaHold()
    {
        // Narrower than 520 is widened.
        QCOMPARE(resized(WindowShape::change(1.0, PortraitDisplayMode::normal, 300)),
                 QSizeF(520, 554));
        // A very wide picture never makes the window lower than 360.
        QCOMPARE(resized(WindowShape::change(10.0, PortraitDisplayMode::normal, 800)),
                 QSizeF(800, 360));
        // No width known: the default 700.
        QCOMPARE(resized(WindowShape::change(1.0, PortraitDisplayMode::normal,
                                             std::numeric_limits<double>::quiet_NaN())),
                 QSizeF(700, 734));
    }

    void theWindowFitsTheScreen()
    {
        using WindowShape::fitInto;
        // A phone's upright clip, 700 wide, on a screen with 940 of height to give.
        const QSizeF phone = fitInto(QSizeF(700, 700 * 16.0 / 9 + 34), QSizeF(1540, 940));
        QCOMPARE(phone.height(), 940.0);
        QCOMPARE(phone.width(), (940.0 - 34) * 9 / 16);
        // Too wide: the available width, the height following the picture.
        QCOMPARE(fitInto(QSizeF(2000, 1000 + 34), QSizeF(1500, 1000)), QSizeF(1500, 750 + 34));
        // Fitting wins over the minimums: a small screen gives a window under 520 x 360.
        QCOMPARE(fitInto(QSizeF(520, 520 * 16.0 / 9 + 34), QSizeF(800, 334)),
                 QSizeF(300 * 9.0 / 16, 334));
        // What fits is left as it is.
        QCOMPARE(fitInto(QSizeF(1000, 597), QSizeF(1540, 940)), QSizeF(1000, 597));
        // No room to speak of, or no picture: unchanged.
        QCOMPARE(fitInto(QSizeF(700, 430), QSizeF(0, 0)), QSizeF(700, 430));
        QCOMPARE(fitInto(QSizeF(700, 30), QSizeF(500, 300)), QSizeF(700, 30));
    }

    void aFrameIsKeptInsideTheAvailableArea()
    {
        const QRect available(0, 0, 1600, 1000);
        QCOMPARE(WindowFit::keptInside(QRect(100, 100, 700, 500), available),
                 QRect(100, 100, 700, 500));
        // Past the right edge and the bottom: moved back, no more than needed.
        QCOMPARE(WindowFit::keptInside(QRect(100, 100, 1560, 1000), available),
                 QRect(40, 0, 1560, 1000));
        QCOMPARE(WindowFit::keptInside(QRect(-50, -20, 300, 200), available),
                 QRect(0, 0, 300, 200));
        // Larger than the area: its top-left corner stays inside.
        QCOMPARE(WindowFit::keptInside(QRect(500, 500, 2000, 1200), available),
                 QRect(0, 0, 2000, 1200));
        QCOMPARE(WindowFit::largestContent(QSize(1600, 1000), QSize(2, 46)), QSize(1598, 954));
        QCOMPARE(WindowFit::largestContent(QSize(10, 10), QSize(20, 20)), QSize(1, 1));
    }

    void theWindowManagerIsToldThePicturesAspect()
    {
        WindowAspectHint::SizeHints hints {};
        hints[0] = 16 | 8; // a minimum size and a size, as Qt writes them
        hints[5] = 520;
        const WindowAspectHint::SizeHints told
            = WindowAspectHint::withAspect(hints, QSize(534, 326), QSize(246, 25 + 34));
        QCOMPARE(told[0], 16u | 8u | 128u | 256u);
        QCOMPARE(told[5], 520u); // kept
        // The picture's exact size, so that the window manager rounds nothing away.
        QCOMPARE(told[11], 534u);
        QCOMPARE(told[12], 326u);
        QCOMPARE(told[13], 534u);
        QCOMPARE(told[14], 326u);
        QCOMPARE(told[15], 246u);
        QCOMPARE(told[16], 59u);
        // No shape: the aspect is taken back.
        QCOMPARE(WindowAspectHint::withAspect(told, QSize(), QSize())[0], 16u | 8u | 256u);
        QCOMPARE(WindowAspectHint::withAspect(told, QSize(0, 300), QSize())[0], 16u | 8u | 256u);
    }

    void noRatioLiftsTheConstraintAndKeepsTheSize()
    {
        using WindowShape::ClearConstraint;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        for (double ratio : {0.0, -1.0, nan}) {
            QVERIFY(std::holds_alternative<ClearConstraint>(
                WindowShape::change(ratio, PortraitDisplayMode::normal, 900)));
            QVERIFY(std::holds_alternative<ClearConstraint>(
                WindowShape::change(ratio, PortraitDisplayMode::fill, 900)));
        }
    }

    void sizesThatAreNotFiniteChangeNothing()
    {
        const double infinity = std::numeric_limits<double>::infinity();
        QVERIFY(std::holds_alternative<WindowShape::Keep>(
            WindowShape::change(infinity, PortraitDisplayMode::normal, 900)));
        // A tiny ratio makes an infinite height.
        QVERIFY(std::holds_alternative<WindowShape::Keep>(
            WindowShape::change(1e-320, PortraitDisplayMode::normal, 900)));
        // In a portrait mode the video's infinite ratio is not used.
        QCOMPARE(resized(WindowShape::change(infinity, PortraitDisplayMode::smart, 520)).width(),
                 520.0);
    }

    void theSidebarNeedsAWiderWindow()
    {
        QCOMPARE(WindowSizes::minimumContentSize(true), QSize(780, 360));
        QCOMPARE(WindowSizes::minimumContentSize(false), QSize(520, 360));
        QCOMPARE(WindowSizes::contentSizeForSidebar({700, 400}, true), QSize(780, 430));
        QCOMPARE(WindowSizes::contentSizeForSidebar({600, 700}, true), QSize(780, 700));
        QCOMPARE(WindowSizes::contentSizeForSidebar({900, 380}, true), QSize(900, 380));
        // Hiding the sidebar never shrinks the window.
        QCOMPARE(WindowSizes::contentSizeForSidebar({780, 430}, false), QSize(780, 430));
    }

    void timesReadAsMinutesAndSeconds_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << "00:00";
        QTest::newRow("truncated") << 59.99 << "00:59";
        QTest::newRow("over an hour") << 3725.0 << "62:05";
        QTest::newRow("ninety minutes") << 5400.0 << "90:00";
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << "00:00";
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "00:00";
        QTest::newRow("huge") << 1e300 << "35791394:07";
    }

    void timesReadAsMinutesAndSeconds()
    {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(TimeText::time(seconds), text);
    }

    void theRemainingTimeHasAMinusSignAndNeverGoesBelowZero()
    {
        QCOMPARE(TimeText::remaining(100, 40.5), QString::fromUtf16(u"\u221200:59"));
        QCOMPARE(TimeText::remaining(100, 40), QString::fromUtf16(u"\u221201:00"));
        QCOMPARE(TimeText::remaining(0, 0), QString::fromUtf16(u"\u221200:00"));
        QCOMPARE(TimeText::remaining(10, 12), QString::fromUtf16(u"\u221200:00"));
        QCOMPARE(TimeText::remaining(std::numeric_limits<double>::quiet_NaN(), 3),
                 QString::fromUtf16(u"\u221200:00"));
    }
};

QTEST_APPLESS_MAIN(TestWindowRules)
#include "tst_windowrules.moc"
