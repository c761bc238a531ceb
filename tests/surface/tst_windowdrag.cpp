// Clicks, double clicks and drags on the picture under a real window manager (openbox, started
// on the test display) with real input (xdotool, through the X server's XTEST extension): the
// window manager must never take a click the player needs.
#include "model/playernotifications.h"
#include "surface/playerhostingview.h"

#include <QMouseEvent>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

namespace {

// Counts the mouse releases and double clicks a widget receives.
class ClickCounter final : public QObject
{
public:
    int releases = 0;
    int doubleClicks = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonRelease)
            ++releases;
        if (event->type() == QEvent::MouseButtonDblClick)
            ++doubleClicks;
        return false;
    }
};

bool xdotool(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    return tool.waitForFinished(10'000) && tool.exitCode() == 0;
}

QString number(int value)
{
    return QString::number(value);
}

} // namespace

class TestWindowDrag : public QObject
{
    Q_OBJECT

private:
    QProcess m_windowManager;
    std::unique_ptr<PlayerHostingView> m_view;
    ClickCounter m_counter;

    QPoint pictureMiddle() const { return m_view->mapToGlobal(m_view->rect().center()); }

    bool movePointer(QPoint global)
    {
        const bool moved
            = xdotool({QStringLiteral("mousemove"), number(global.x()), number(global.y())});
        QTest::qWait(30);
        return moved;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("openbox")).isEmpty(),
                 "run ./lumo setup");
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty(),
                 "run ./lumo setup");
        m_windowManager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
        QVERIFY(m_windowManager.waitForStarted());
        QTest::qWait(1000); // openbox takes the display
        QCOMPARE(m_windowManager.state(), QProcess::Running);
    }

    void init()
    {
        m_view = std::make_unique<PlayerHostingView>();
        m_view->resize(640, 360);
        m_view->move(200, 150);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
        QTest::qWait(500); // framed and placed by the window manager
        m_view->installEventFilter(&m_counter);
        m_counter.releases = 0;
        m_counter.doubleClicks = 0;
        QVERIFY(movePointer(pictureMiddle()));
        QTest::qWait(100);
    }

    void cleanup()
    {
        xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
        m_view.reset();
    }

    void cleanupTestCase()
    {
        m_windowManager.terminate();
        m_windowManager.waitForFinished(5000);
    }

    void aClickReachesThePlayerWhole()
    {
        QSignalSpy clicks(&PlayerNotifications::shared(),
                          &PlayerNotifications::playerSurfaceClicked);
        const QPoint before = m_view->pos();
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("1")}));
        QTRY_COMPARE(clicks.count(), 1);
        QTRY_COMPARE(m_counter.releases, 1);
        QTest::qWait(300);
        QCOMPARE(m_view->pos(), before);
    }

    void aDoubleClickTogglesFullScreen()
    {
        QVERIFY(!m_view->isFullScreen());
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                         QStringLiteral("--delay"), QStringLiteral("80"), QStringLiteral("1")}));
        QTRY_COMPARE(m_counter.doubleClicks, 1);
        QTRY_VERIFY(m_view->isFullScreen());
        QTest::qWait(600);
        QVERIFY(movePointer(pictureMiddle()));
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"),
                         QStringLiteral("--delay"), QStringLiteral("80"), QStringLiteral("1")}));
        QTRY_VERIFY(!m_view->isFullScreen());
    }

    void draggingThePictureMovesTheWindow()
    {
        const QPoint start = pictureMiddle();
        const QPoint before = m_view->pos();
        QVERIFY(xdotool({QStringLiteral("mousedown"), QStringLiteral("1")}));
        QTest::qWait(100);
        for (int step = 1; step <= 10; ++step) {
            QVERIFY(movePointer(start + QPoint(8 * step, 5 * step)));
            QTest::qWait(30);
        }
        QVERIFY(xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}));
        // The window followed the pointer, which went 80 across and 50 down.
        QTRY_VERIFY(m_view->pos() != before);
        const QPoint moved = m_view->pos() - before;
        QVERIFY2(qAbs(moved.x() - 80) <= 10 && qAbs(moved.y() - 50) <= 10,
                 qPrintable(QStringLiteral("%1, %2").arg(moved.x()).arg(moved.y())));
    }
};

QTEST_MAIN(TestWindowDrag)
#include "tst_windowdrag.moc"
