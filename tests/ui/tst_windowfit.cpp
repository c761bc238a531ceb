// Every size the window takes fits the screen's available area, under a window manager that
// keeps a panel's room free at the bottom (openbox with a margin): the sidebar, a new picture,
// an address from the command line, at any scale factor (the suite runs it again at 2.5).
// Screenshots go to build/screenshots.
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "testdesktop.h"
#include "ui/contentview.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"

#include <QScreen>
#include <QTest>

class TestWindowFit : public QObject
{
    Q_OBJECT

private:
    TestDesktop::WindowManager m_windowManager;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    ContentView *content() { return m_window->contentView(); }

    QString suffix() const
    {
        return qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ? QStringLiteral("-scaled") : QString();
    }

    // The frame inside the available area, and the whole control bar inside the window.
    void checkOnScreen(const QString &screenshot)
    {
        const QRect available = m_window->screen()->availableGeometry();
        QTRY_VERIFY2_WITH_TIMEOUT(available.contains(m_window->frameGeometry()),
                                  qPrintable(QStringLiteral("frame %1,%2 %3x%4 on %5,%6 %7x%8")
                                                 .arg(m_window->frameGeometry().x())
                                                 .arg(m_window->frameGeometry().y())
                                                 .arg(m_window->frameGeometry().width())
                                                 .arg(m_window->frameGeometry().height())
                                                 .arg(available.x())
                                                 .arg(available.y())
                                                 .arg(available.width())
                                                 .arg(available.height())),
                                  3000);
        const QRect bar = content()->controlBar()->geometry();
        QCOMPARE(bar.height(), PlayerControlBar::barHeight);
        QVERIFY(bar.bottom() < content()->height());
        QVERIFY(content()->geometry().bottom() < m_window->height());
        TestDesktop::saveScreenshot(*m_window, screenshot + suffix());
    }

    void moveFrameTo(QPoint corner)
    {
        QVERIFY(
            TestDesktop::xdotool({QStringLiteral("windowmove"), QString::number(m_window->winId()),
                                  QString::number(corner.x()), QString::number(corner.y())}));
        QTest::qWait(400);
    }

private Q_SLOTS:
    void initTestCase()
    {
        // A 1,000-pixel-high available area on the test display's 1,080-pixel screen.
        QVERIFY2(m_windowManager.start(80), "openbox or xdotool is missing: run ./lumo setup");
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTest::qWait(300); // framed by the window manager
        // The panel's room is left out.
        const QScreen *screen = m_window->screen();
        QTRY_VERIFY(screen->availableGeometry().bottom() < screen->geometry().bottom());
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
    }

    void theSidebarBesideAnUprightClipStaysOnScreen()
    {
        player().setPresentationSize({1080, 1920});
        m_model->play(QUrl(QStringLiteral("file:///media/phone.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(500);
        checkOnScreen(QStringLiteral("window-fit-upright-clip"));
        // Against the right edge, where the sidebar's room is not.
        const QRect available = m_window->screen()->availableGeometry();
        moveFrameTo({available.right() - m_window->frameGeometry().width(), available.top()});
        content()->setShowSidebar(true);
        QTest::qWait(ContentView::sidebarAnimationMs + 500);
        checkOnScreen(QStringLiteral("window-fit-upright-clip-sidebar"));
    }

    void anAddressFromTheCommandLineOpensOnScreen()
    {
        const QRect available = m_window->screen()->availableGeometry();
        moveFrameTo({available.right() - m_window->frameGeometry().width(), available.top() + 20});
        player().setPresentationSize({1280, 720});
        content()->openAddress(QStringLiteral("http://127.0.0.1:9/live/news.m3u8"));
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(ContentView::sidebarAnimationMs + 500);
        checkOnScreen(QStringLiteral("window-fit-command-line-address"));
    }

    void aWidePictureLowOnTheScreenMovesUp()
    {
        const QRect available = m_window->screen()->availableGeometry();
        moveFrameTo({available.left(), available.bottom() - m_window->frameGeometry().height()});
        m_window->resize(m_window->width() * 5 / 4, m_window->height());
        QTest::qWait(300);
        player().setPresentationSize({1440, 1080});
        m_model->play(QUrl(QStringLiteral("file:///media/square.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(500);
        checkOnScreen(QStringLiteral("window-fit-low-on-screen"));
    }
};

QTEST_MAIN(TestWindowFit)
#include "tst_windowfit.moc"
