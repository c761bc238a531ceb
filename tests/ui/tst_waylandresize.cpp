// On Wayland, which carries no aspect hint, a window resized by hand takes the picture's shape
// again once the resize ends. The window runs on a private headless weston.
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "testdesktop.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"
#include "ui/windowaspecthint.h"
#include "ui/windowshape.h"

#include <QApplication>
#include <QScreen>
#include <QTest>

class TestWaylandResize : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    ContentView *content() { return m_window->contentView(); }

    // The picture (the content less the bar) width / height.
    double shownRatio()
    {
        const QSize size = content()->size();
        return size.width() / (size.height() - WindowShape::controlBarHeight);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
        QVERIFY(!WindowAspectHint::isAvailable());
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        player().setPresentationSize({});
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
    }

    void aResizeByHandEndsInThePicturesShape()
    {
        player().setPresentationSize({1280, 720});
        m_model->play(QUrl(QStringLiteral("file:///media/film.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        QTRY_VERIFY(std::abs(shownRatio() / (16.0 / 9) - 1) < 0.01);
        // The sizes the user drags the window through.
        for (const QSize step : {QSize(700, 380), QSize(760, 360), QSize(780, 340)}) {
            m_window->resize(step);
            QTest::qWait(40);
        }
        QTRY_VERIFY2(
            std::abs(shownRatio() / (16.0 / 9) - 1) < 0.01,
            qPrintable(QStringLiteral("%1x%2").arg(content()->width()).arg(content()->height())));
        // The width the user chose is kept; the height follows it.
        QCOMPARE(content()->width(), 780);
        const QRect available = m_window->screen()->availableGeometry();
        QVERIFY(available.contains(m_window->frameGeometry()));
    }

    void withoutAPictureTheSizeIsLeftAlone()
    {
        m_window->resize(640, 420);
        QTest::qWait(2 * ContentView::resizeSettleMs);
        QCOMPARE(m_window->size(), QSize(640, 420));
    }
};

int main(int argc, char *argv[])
{
    TestDesktop::WaylandCompositor compositor;
    if (!compositor.start({1600, 1000}))
        return 1;
    QApplication application(argc, argv);
    TestWaylandResize test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_waylandresize.moc"
