// The window stays on its screen under a window manager (openbox on the test display): a tall
// picture, or a portrait mode on a wide one, gives a window whose frame fits the screen's
// available area, in the picture's shape. Screenshots go to build/screenshots.
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "surface/fullscreentoggle.h"
#include "testdesktop.h"
#include "ui/contentview.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"
#include "ui/windowshape.h"

#include <QScreen>
#include <QSlider>
#include <QTest>

class TestWindowOnScreen : public QObject
{
    Q_OBJECT

private:
    TestDesktop::WindowManager m_windowManager;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    ContentView *content() { return m_window->contentView(); }

    void saveScreenshot(const QString &name) { TestDesktop::saveScreenshot(*m_window, name); }

    // The frame on the screen, and the picture (the content less the bar) in the given shape.
    void checkOnScreenInShape(double ratio)
    {
        const QRect available = m_window->screen()->availableGeometry();
        QTRY_VERIFY2(available.contains(m_window->frameGeometry()),
                     qPrintable(QStringLiteral("frame %1,%2 %3x%4 on %5x%6")
                                    .arg(m_window->frameGeometry().x())
                                    .arg(m_window->frameGeometry().y())
                                    .arg(m_window->frameGeometry().width())
                                    .arg(m_window->frameGeometry().height())
                                    .arg(available.width())
                                    .arg(available.height())));
        const QSize size = content()->size();
        const double shown = size.width() / (size.height() - WindowShape::controlBarHeight);
        QVERIFY2(std::abs(shown / ratio - 1) < 0.01,
                 qPrintable(QStringLiteral("%1x%2").arg(size.width()).arg(size.height())));
    }

    // The whole control bar inside the content, at the bottom, and the content no lower than
    // its minimum.
    void checkBarWhole()
    {
        const QRect bar = content()->controlBar()->geometry();
        QVERIFY2(bar.height() == PlayerControlBar::barHeight && bar.bottom() < content()->height()
                     && content()->controlBar()->isVisible(),
                 qPrintable(QStringLiteral("bar %1,%2 %3x%4 in %5x%6")
                                .arg(bar.x())
                                .arg(bar.y())
                                .arg(bar.width())
                                .arg(bar.height())
                                .arg(content()->width())
                                .arg(content()->height())));
        // The window's own height is shown, not clipped by a larger content.
        QVERIFY(content()->geometry().bottom() < m_window->height());
    }

    void checkContentSize(QSize expected)
    {
        QTRY_VERIFY2_WITH_TIMEOUT((content()->size() - expected).width() == 0
                                      && std::abs((content()->size() - expected).height()) <= 1,
                                  qPrintable(QStringLiteral("content %1x%2, expected %3x%4")
                                                 .arg(content()->width())
                                                 .arg(content()->height())
                                                 .arg(expected.width())
                                                 .arg(expected.height())),
                                  3000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_windowManager.start(), "openbox or xdotool is missing: run ./lumo setup");
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        player().setPresentationSize({});
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTest::qWait(300); // framed by the window manager
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
    }

    void aPhonesUprightClipFitsTheScreen()
    {
        player().setPresentationSize({1080, 1920});
        m_model->play(QUrl(QStringLiteral("file:///media/phone.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(300);
        checkOnScreenInShape(1080.0 / 1920);
        saveScreenshot(QStringLiteral("window-upright-clip-on-screen"));
    }

    void aResizeByHandKeepsThePicturesShape()
    {
        // Wide enough for the picture's shape to be above the minimum height.
        m_window->resize(1000, 600);
        QTest::qWait(300);
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(300);
        checkOnScreenInShape(16.0 / 9);
        // Widened and flattened by hand, through the window manager.
        QVERIFY(
            TestDesktop::xdotool({QStringLiteral("windowsize"), QString::number(m_window->winId()),
                                  QStringLiteral("1400"), QStringLiteral("500")}));
        QTRY_VERIFY(m_window->width() != 1400 || m_window->height() != 500);
        QTest::qWait(500);
        checkOnScreenInShape(16.0 / 9);
        saveScreenshot(QStringLiteral("window-resized-by-hand"));
    }

    void portraitFillOnAWideFilmFitsTheScreen()
    {
        player().setPresentationSize({1920, 1080});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        m_window->resize(1100, 700);
        QTest::qWait(300);
        content()->setPortraitMode(PortraitDisplayMode::fill);
        QTest::qWait(500);
        checkOnScreenInShape(WindowShape::portraitRatio);
        saveScreenshot(QStringLiteral("window-portrait-fill-on-screen"));
    }

    void leavingFullScreenTakesTheShapeChosenMeanwhileOnScreen()
    {
        player().setPresentationSize({1920, 1080});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        m_window->resize(1100, 700);
        QTest::qWait(300);
        toggleFullScreen(m_window.get());
        QTRY_VERIFY(content()->isFullScreen());
        QTest::qWait(300);
        // Chosen while the picture fills the screen: the window takes it on leaving.
        content()->setPortraitMode(PortraitDisplayMode::fill);
        QTest::qWait(300);
        toggleFullScreen(m_window.get());
        QTRY_VERIFY(!m_window->isFullScreen());
        QTest::qWait(800);
        checkOnScreenInShape(WindowShape::portraitRatio);
        saveScreenshot(QStringLiteral("window-after-full-screen"));
    }

    void leavingTheMaximisedStateTakesTheNewPicturesShapeOnScreen()
    {
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        m_window->resize(1200, 710);
        QTest::qWait(300);
        m_window->showMaximized();
        QTRY_VERIFY(m_window->isMaximized());
        QTest::qWait(300);
        // An upright clip opened while maximised, at the wide window's width, would be far
        // taller than the screen.
        player().setPresentationSize({1080, 1920});
        m_model->play(QUrl(QStringLiteral("file:///media/phone.mp4")), std::nullopt, false);
        QTest::qWait(500);
        m_window->showNormal();
        QTRY_VERIFY(!m_window->isMaximized());
        QTest::qWait(800);
        checkOnScreenInShape(1080.0 / 1920);
        saveScreenshot(QStringLiteral("window-after-maximised"));
    }
    void aChannelBesideTheSidebarGetsTheComputedSize()
    {
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->size(), QSize(780, 430));
        QTest::qWait(300);
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("http://127.0.0.1:9/live/news.m3u8")),
                      QStringLiteral("News"), true);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(800); // the window manager has answered
        // 780 / (16 / 9) + 34 = 472.75: the width is the whole content's, sidebar included.
        checkContentSize({780, 473});
        checkBarWhole();
        saveScreenshot(QStringLiteral("window-channel-beside-sidebar"));
    }

    void portraitFillBackToNormalKeepsTheMinimumHeight()
    {
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTest::qWait(300);
        content()->setPortraitMode(PortraitDisplayMode::fill);
        QTest::qWait(600);
        content()->setPortraitMode(PortraitDisplayMode::normal);
        QTest::qWait(800);
        const int width = content()->width();
        checkContentSize({width, std::max(qRound(width / (16.0 / 9) + 34), 360)});
        QVERIFY2(content()->height() >= 360, qPrintable(QString::number(content()->height())));
        checkBarWhole();
        saveScreenshot(QStringLiteral("window-portrait-fill-then-normal"));
    }

    void thePositionSliderKeepsItsRoomInTheNarrowestWindows()
    {
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        m_window->resize(m_window->size() - content()->size() + QSize(520, 360));
        QTRY_COMPARE(content()->width(), 520);
        QTest::qWait(300);
        QVERIFY(content()->controlBar()->positionSlider()->width() >= 120);
        saveScreenshot(QStringLiteral("control-bar-narrowest-window"));
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->width(), 780);
        QTest::qWait(ContentView::sidebarAnimationMs + 300);
        QVERIFY(content()->controlBar()->positionSlider()->width() >= 120);
        checkBarWhole();
        saveScreenshot(QStringLiteral("control-bar-beside-sidebar"));
    }
};

QTEST_MAIN(TestWindowOnScreen)
#include "tst_windowonscreen.moc"
