// The application and its first window under a real X server, drawing real video with libmpv.
#include "app/lumomediaplayerapp.h"
#include "model/playermodel.h"
#include "surface/playerhostingview.h"
#include "testmedia.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"
#include "ui/toastoverlay.h"
#include "webplayer/youtubehostingview.h"
#include "webplayer/youtubeplayerregistry.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestLumoMediaPlayerApp : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;

    static QPushButton *emptyState(PlayerWindow &window)
    {
        for (QPushButton *button : window.findChildren<QPushButton *>())
            if (button->toolTip() == QLatin1String("Open Media"))
                return button;
        return nullptr;
    }
    static QLabel *label(PlayerWindow &window, const QString &text)
    {
        for (QLabel *label : window.findChildren<QLabel *>())
            if (label->text() == text && label->isVisible())
                return label;
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("clip.mp4")), 3, {640, 360}));
    }

    void opensTheFileGivenOnTheCommandLineAndDrawsIt()
    {
        LumoMediaPlayerApp app;
        QSignalSpy frames(app.window().hostingView(), &PlayerHostingView::frameDrawn);
        app.start({m_media.filePath(QStringLiteral("clip.mp4"))});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // The first window opens at its initial size, centred on the screen.
        QCOMPARE(app.window().contentView()->size(), QSize(700, 430));
        const QPoint screenCentre = app.window().screen()->availableGeometry().center();
        QVERIFY((app.window().frameGeometry().center() - screenCentre).manhattanLength() <= 2);
        QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 3, 15000);
        QCOMPARE(app.model().title(), "clip.mp4");
        QVERIFY(app.window().windowTitle().startsWith(QLatin1String("clip.mp4")));
        QVERIFY(!emptyState(app.window())->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(app.model().videoAspectRatio() - 16.0 / 9) < 0.001, 10000);

        // The picture is the clip, not black: the test pattern is colourful.
        const QImage picture = app.window().hostingView()->grabFramebuffer();
        int coloured = 0;
        for (int y = 0; y < picture.height(); y += 16)
            for (int x = 0; x < picture.width(); x += 16)
                coloured += qGray(picture.pixel(x, y)) > 40 ? 1 : 0;
        QVERIFY2(coloured > 50, "the view shows no picture");
    }

    void theEmptyStateInvitesToOpenMedia()
    {
        LumoMediaPlayerApp app;
        app.start({});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QPushButton *invitation = emptyState(app.window());
        QVERIFY(invitation);
        QVERIFY(invitation->isVisible());
        QVERIFY(label(app.window(), QStringLiteral("Click to open media")));
        QVERIFY(label(app.window(), QStringLiteral("or drop a video or audio file here")));
        QCOMPARE(app.model().title(), "No Media Selected");
    }

    void aFileThatCannotPlaySaysSo()
    {
        LumoMediaPlayerApp app;
        app.start({m_media.filePath(QStringLiteral("missing.mp4"))});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // The notice slides in at the top of the window.
        ToastOverlay *toast = app.window().contentView()->toast();
        QTRY_COMPARE_WITH_TIMEOUT(toast->message(), QStringLiteral("Could not play missing.mp4."),
                                  15000);
        QVERIFY(toast->isVisible());
        QTRY_VERIFY(emptyState(app.window())->isVisible());
    }

    void anUnusableAddressShowsTheError()
    {
        LumoMediaPlayerApp app;
        app.start({QStringLiteral("ftp://example.com/a.m3u8")});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QTRY_VERIFY_WITH_TIMEOUT(
            label(app.window(), QStringLiteral("Enter a valid HTTP or HTTPS address.")), 15000);
    }

    void aVideoServiceAddressOpensTheWebPlayerWhichReceivesTheTransport()
    {
        LumoMediaPlayerApp app;
        app.start({QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ")});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QTRY_VERIFY_WITH_TIMEOUT(YouTubePlayerRegistry::shared().webView(), 15000);
        auto *web = qobject_cast<YouTubeHostingView *>(YouTubePlayerRegistry::shared().webView());
        QVERIFY(web);
        QCOMPARE(web->window(), &app.window());
        QVERIFY(web->isVisible());
        QVERIFY(!app.window().hostingView()->isVisible());
        QVERIFY(!emptyState(app.window())->isVisible());

        // The model's commands reach the page. Offline the service's script fails to load, but
        // the page and its functions are there; the test replaces one to see it called.
        const auto pageSays = [web](const QString &script) {
            QVariant answer;
            web->page()->runJavaScript(script, [&](const QVariant &value) { answer = value; });
            return QTest::qWaitFor([&] { return answer.isValid(); }, 5000) && answer.toBool();
        };
        QTRY_VERIFY_WITH_TIMEOUT(pageSays(QStringLiteral("document.readyState === 'complete' && "
                                                         "typeof lumoToggle === 'function'")),
                                 30000);
        QVERIFY(pageSays(QStringLiteral("window.lumoToggle = function () { window.toggled = true; "
                                        "}; true")));
        app.model().togglePlayback();
        QTRY_VERIFY_WITH_TIMEOUT(pageSays(QStringLiteral("window.toggled === true")), 15000);
    }
};

QTEST_MAIN(TestLumoMediaPlayerApp)
#include "tst_lumomediaplayerapp.moc"
