// The web player in real Qt WebEngine. The video service is out of reach here, so its IFrame API
// script is redirected to a stand-in served from loopback that records what the page asks of
// the player.
#include "apiscriptredirect.h"
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "pagescript.h"
#include "scriptedmediaplayer.h"
#include "surface/playerhostingview.h"
#include "surface/playersurface.h"
#include "surface/playersurfaceregistry.h"
#include "webplayer/youtubehostingview.h"
#include "webplayer/youtubepage.h"
#include "webplayer/youtubeplayerregistry.h"
#include "webplayer/youtubeplayerview.h"

#include <QApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>

using namespace Qt::StringLiterals;

namespace {

YouTubeContent content(std::optional<QString> video, std::optional<QString> playlist)
{
    return *YouTubeContent::make(std::move(video), std::move(playlist));
}

// The value of a script in the page, waiting for the answer; invalid when none came.
QVariant evaluated(QWebEngineView *view, const QString &script)
{
    return PageScript::evaluate(view->page(), script).value_or(QVariant());
}

QString calls(QWebEngineView *view)
{
    return evaluated(view, u"JSON.stringify(standIn.player.calls)"_s).toString();
}

bool playerIsReady(QWebEngineView *view)
{
    return evaluated(view, u"!!(window.standIn && standIn.player && standIn.player.calls.length)"_s)
        .toBool();
}

// Ready on the page of that video. Right after another video is asked for, the page before it
// is still there and its player ready: a check that does not name the video passes on it and
// then fails while the new page loads.
bool playerIsReadyWith(QWebEngineView *view, const QString &videoID)
{
    return evaluated(view,
                     u"!!(window.standIn && standIn.player && standIn.player.calls.length"
                     " && standIn.player.options.videoId === '%1')"_s.arg(videoID))
        .toBool();
}

const QString watchAddress = u"https://www.youtube.com/watch?v=abc123"_s;

} // namespace

class TestYouTubePlayerView : public QObject
{
    Q_OBJECT

private:
    LocalHttpServer m_server;
    ApiScriptRedirect m_redirect;
    std::unique_ptr<PlayerModel> m_model;

    YouTubePlayerRegistry &webRegistry() { return YouTubePlayerRegistry::shared(); }
    PlayerSurfaceRegistry &surfaceRegistry() { return PlayerSurfaceRegistry::shared(); }

    // A shown player surface that makes the real web player for web content.
    std::unique_ptr<PlayerSurface> shownSurface()
    {
        auto surface = std::make_unique<PlayerSurface>(*m_model);
        surface->setWebPlayerViewFactory(
            [](QWidget *parent) -> WebPlayerView * { return new YouTubePlayerView(parent); });
        surface->resize(480, 270);
        surface->show();
        return surface;
    }

    static void showLoaded(YouTubePlayerView &view, const YouTubeContent &content)
    {
        view.resize(480, 270);
        view.show();
        view.updateContent(content);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QFile script(QStringLiteral(LUMO_SOURCE_DIR "/tests/webplayer/fixtures/iframe_api.js"));
        QVERIFY(script.open(QIODevice::ReadOnly));
        HttpResponse response = HttpResponse::text(script.readAll(), "text/javascript");
        // Every page load fetches it again, so the count of requests is the count of loads.
        response.headers.append(std::pair<QByteArray, QByteArray>("Cache-Control", "no-store"));
        m_server.route(u"/iframe_api"_s, response);
        QVERIFY(m_server.listen());
        m_redirect.target = m_server.url(u"/iframe_api"_s);
        QWebEngineProfile::defaultProfile()->setUrlRequestInterceptor(&m_redirect);
        qunsetenv(YouTubePage::webOriginVariable);
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_model->setWebPlayerScripts(&webRegistry());
    }
    void cleanup()
    {
        m_model.reset();
        webRegistry().setWebView(nullptr);
        surfaceRegistry().setSurface(nullptr);
    }

    void thePageComesFromTheProductOriginAndMakesThePlayer()
    {
        YouTubePlayerView view;
        showLoaded(view, content(u"abc123"_s, std::nullopt));
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(evaluated(web, u"location.origin"_s).toString(), u"https://lumomediaplayer.app");
        QCOMPARE(evaluated(web, u"standIn.player.elementId"_s).toString(), u"player");
        QCOMPARE(evaluated(web, u"JSON.stringify(standIn.player.options.playerVars)"_s).toString(),
                 u"{\"autoplay\":1,\"controls\":1,\"playsinline\":1,\"rel\":0,\"enablejsapi\":1,"
                 u"\"origin\":\"https://lumomediaplayer.app\"}");
        QCOMPARE(evaluated(web, u"standIn.player.options.videoId"_s).toString(), u"abc123");
        QCOMPARE(evaluated(web,
                           u"standIn.player.options.width + ' ' + "
                           u"standIn.player.options.height"_s)
                     .toString(),
                 u"100% 100%");
        QCOMPARE(evaluated(web, u"standIn.players.length"_s).toInt(), 1);
    }

    void theReadyPlayerStartsPlayingWithoutAGesture()
    {
        YouTubePlayerView view;
        showLoaded(view, content(u"abc123"_s, std::nullopt));
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(calls(web), u"[[\"playVideo\"]]");
        QCOMPARE(evaluated(web, u"standIn.player.state"_s).toInt(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(evaluated(web, u"standIn.autoplay"_s).toString(), u"allowed",
                                  10000);

        // The same page in a view that insists on a gesture is refused: the setting matters.
        web->settings()->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, true);
        view.updateContent(content(u"other"_s, std::nullopt));
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReadyWith(web, u"other"_s), 20000);
        QTRY_COMPARE_WITH_TIMEOUT(evaluated(web, u"standIn.autoplay"_s).toString(),
                                  u"NotAllowedError", 10000);
    }

    void aPlaylistOnlyPagePlaysTheListFromItsStart()
    {
        YouTubePlayerView view;
        showLoaded(view, content(std::nullopt, u"PLx"_s));
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(evaluated(web, u"'videoId' in standIn.player.options"_s).toBool(), false);
        QCOMPARE(evaluated(web, u"standIn.player.options.playerVars.listType"_s).toString(),
                 u"playlist");
        QCOMPARE(evaluated(web, u"standIn.player.options.playerVars.list"_s).toString(), u"PLx");
        QCOMPARE(calls(web), u"[[\"playVideo\"]]");
    }

    void hostileIdentifiersReachThePlayerUnchanged()
    {
        const QString video = QString::fromUtf16(u"a\"b\\c'd</script><!--<script>\u2028\u2029\n"
                                                 u"caf\u00e9 \u6f22 \U0001F600 ${x}");
        const QString playlist = QString::fromUtf16(u"PL</SCRIPT>&amp;\"");
        YouTubePlayerView view;
        showLoaded(view, content(video, playlist));
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(evaluated(web, u"standIn.player.options.videoId"_s).toString(), video);
        QCOMPARE(evaluated(web, u"standIn.player.options.playerVars.list"_s).toString(), playlist);
        // The page around them is intact: the four functions exist.
        QCOMPARE(evaluated(web,
                           u"typeof lumoToggle + typeof lumoSkip + typeof lumoSetVolume + "
                           u"typeof lumoSetMuted"_s)
                     .toString(),
                 u"functionfunctionfunctionfunction");
    }

    void transportCommandsFromTheModelDriveThePlayer()
    {
        const auto shown = shownSurface();
        PlayerSurface &surface = *shown;
        m_model->openRemote(watchAddress, std::nullopt);
        QVERIFY(surface.showsWebPlayer());
        QWebEngineView *web = webRegistry().webView();
        QVERIFY(web);
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        evaluated(web, u"standIn.player.calls = []"_s);

        // Toggle pauses a playing player and plays any other.
        m_model->togglePlayback();
        QTRY_COMPARE(calls(web), u"[[\"pauseVideo\"]]");
        m_model->togglePlayback();
        QTRY_COMPARE(calls(web), u"[[\"pauseVideo\"],[\"playVideo\"]]");

        // Skips never seek before the start and let the player seek ahead.
        evaluated(web, u"standIn.player.time = 10; standIn.player.calls = []"_s);
        m_model->skip(-30);
        QTRY_COMPARE(calls(web), u"[[\"seekTo\",0,true]]");
        m_model->skip(5);
        QTRY_COMPARE(calls(web), u"[[\"seekTo\",0,true],[\"seekTo\",5,true]]");

        // A muted player is unmuted by any volume change; the model keeps the raw volume.
        evaluated(web, u"standIn.player.calls = []"_s);
        m_model->toggleMute();
        QTRY_COMPARE(calls(web), u"[[\"mute\"]]");
        m_model->setVolume(0.42);
        QTRY_COMPARE(calls(web), u"[[\"mute\"],[\"unMute\"],[\"setVolume\",42]]");
        QCOMPARE(evaluated(web, u"standIn.player.muted"_s).toBool(), false);
        evaluated(web, u"standIn.player.calls = []"_s);
        m_model->setVolume(1.5);
        QTRY_COMPARE(calls(web), u"[[\"unMute\"],[\"setVolume\",100]]");
        QCOMPARE(m_model->volume(), 1.5);

        evaluated(web, u"standIn.player.calls = []"_s);
        webRegistry().setMuted(true);
        webRegistry().setMuted(false);
        QTRY_COMPARE(calls(web), u"[[\"mute\"],[\"unMute\"]]");
    }

    void theSameContentLoadsThePageOnceAndNewContentReloadsIt()
    {
        const int fetchedBefore = m_server.requestCount(u"/iframe_api"_s);
        YouTubePlayerView view;
        QSignalSpy loads(view.hostingView()->page(), &QWebEnginePage::loadFinished);
        showLoaded(view, content(u"first"_s, std::nullopt));
        QCOMPARE(view.loadedContentID(), u"first|");
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        evaluated(web, u"window.marker = 'still here'"_s);

        view.updateContent(content(u"first"_s, std::nullopt));
        view.updateContent(content(u"first"_s, std::nullopt));
        QTest::qWait(300);
        QCOMPARE(loads.size(), 1);
        QCOMPARE(m_server.requestCount(u"/iframe_api"_s), fetchedBefore + 1);
        QCOMPARE(evaluated(web, u"window.marker"_s).toString(), u"still here");

        view.updateContent(content(u"first"_s, u"PLx"_s));
        QCOMPARE(view.loadedContentID(), u"first|PLx");
        QTRY_COMPARE_WITH_TIMEOUT(loads.size(), 2, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(evaluated(web, u"typeof window.marker"_s).toString(), u"undefined");
        QCOMPARE(evaluated(web, u"standIn.player.options.playerVars.list"_s).toString(), u"PLx");
        QCOMPARE(m_server.requestCount(u"/iframe_api"_s), fetchedBefore + 2);
    }

    void unrelatedUpdatesOfTheSurfaceDoNotRestartThePage()
    {
        const auto shown = shownSurface();
        PlayerSurface &surface = *shown;
        m_model->openRemote(watchAddress, std::nullopt);
        QWebEngineView *web = webRegistry().webView();
        QVERIFY(web);
        QSignalSpy loads(web->page(), &QWebEnginePage::loadFinished);
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(loads.size(), 1);

        surface.setPortraitMode(PortraitDisplayMode::rotate);
        surface.setFullScreen(true);
        m_model->openRemote(watchAddress, u"Same video, new name"_s);
        QTest::qWait(300);
        QCOMPARE(webRegistry().webView(), web);
        QCOMPARE(loads.size(), 1);

        m_model->openRemote(u"https://youtu.be/next"_s, std::nullopt);
        QCOMPARE(webRegistry().webView(), web);
        QTRY_COMPARE_WITH_TIMEOUT(loads.size(), 2, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QCOMPARE(evaluated(web, u"standIn.player.options.videoId"_s).toString(), u"next");
    }

    void commandsRunOnTheNextTurnAndAreDroppedWhenTheViewIsGone()
    {
        YouTubePlayerView older;
        showLoaded(older, content(u"older"_s, std::nullopt));
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(older.hostingView()), 20000);
        auto newer = std::make_unique<YouTubePlayerView>();
        showLoaded(*newer, content(u"newer"_s, std::nullopt));
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(newer->hostingView()), 20000);
        QCOMPARE(webRegistry().webView(), newer->hostingView());

        // Given now, run later: the view taken down in the meantime never gets it, and the
        // registry does not fall back to the other page.
        webRegistry().setMuted(true);
        newer.reset();
        QCOMPARE(webRegistry().webView(), nullptr);
        QTest::qWait(300);
        QCOMPARE(calls(older.hostingView()), u"[[\"playVideo\"]]");

        // With no page at all, commands vanish without a trace.
        webRegistry().evaluate(u"lumoToggle();"_s);
        QTest::qWait(100);
        QCOMPARE(calls(older.hostingView()), u"[[\"playVideo\"]]");

        // The registered page gets the command once the loop turns.
        older.updateContent(content(u"older"_s, std::nullopt));
        webRegistry().setMuted(true);
        QTRY_COMPARE(calls(older.hostingView()), u"[[\"playVideo\"],[\"mute\"]]");
    }

    void takingDownAViewWithdrawsOnlyItsOwnRegistrations()
    {
        auto first = std::make_unique<YouTubePlayerView>();
        YouTubePlayerView second;
        QCOMPARE(webRegistry().webView(), second.hostingView());
        QCOMPARE(surfaceRegistry().surface()->recordingView(), second.hostingView());
        first.reset();
        QCOMPARE(webRegistry().webView(), second.hostingView());
        QCOMPARE(surfaceRegistry().surface()->recordingView(), second.hostingView());

        // Every update registers the view again.
        auto third = std::make_unique<YouTubePlayerView>();
        second.updateContent(content(u"x"_s, std::nullopt));
        QCOMPARE(webRegistry().webView(), second.hostingView());
        QCOMPARE(surfaceRegistry().surface()->recordingView(), second.hostingView());
        third.reset();
        QCOMPARE(webRegistry().webView(), second.hostingView());
    }

    void theRegistriesFollowTheSurfaceBetweenVideoAndWeb()
    {
        const auto shown = shownSurface();
        PlayerSurface &surface = *shown;
        m_model->play(QUrl::fromLocalFile(u"/media/clip.mp4"_s), std::nullopt, false);
        QCOMPARE(surfaceRegistry().surface(), surface.hostingView());
        QCOMPARE(webRegistry().webView(), nullptr);

        m_model->openRemote(watchAddress, std::nullopt);
        auto *web = qobject_cast<YouTubeHostingView *>(webRegistry().webView());
        QVERIFY(web);
        QCOMPARE(surfaceRegistry().surface(), static_cast<PlayerRecordingSurface *>(web));
        QCOMPARE(surfaceRegistry().surface()->recordingView(), web);
        QVERIFY(surface.hostingView()->isHidden());
        QCOMPARE(surface.findChildren<YouTubePlayerView *>().size(), 1);

        m_model->play(QUrl::fromLocalFile(u"/media/clip.mp4"_s), std::nullopt, false);
        QCOMPARE(surfaceRegistry().surface(), surface.hostingView());
        QCOMPARE(webRegistry().webView(), nullptr);
        QVERIFY(surface.findChildren<YouTubePlayerView *>().isEmpty());

        // Stopping web content also takes the page down.
        m_model->openRemote(watchAddress, std::nullopt);
        QVERIFY(webRegistry().webView());
        m_model->stop();
        QCOMPARE(webRegistry().webView(), nullptr);
        QCOMPARE(surfaceRegistry().surface(), surface.hostingView());
    }

    void theWholeViewIsRecorded()
    {
        YouTubeHostingView view;
        view.resize(400, 226);
        QCOMPARE(view.recordingView(), &view);
        QCOMPARE(view.recordingRectInView(), QRectF(0, 0, 400, 226));
    }

    void aClickTellsTheWindowAndStillReachesThePage()
    {
        YouTubePlayerView view;
        showLoaded(view, content(u"abc123"_s, std::nullopt));
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QWebEngineView *web = view.hostingView();
        QTRY_VERIFY_WITH_TIMEOUT(playerIsReady(web), 20000);
        QSignalSpy clicked(&PlayerNotifications::shared(),
                           &PlayerNotifications::playerSurfaceClicked);

        // Through the window, as the platform delivers it. Chromium ignores input for a moment
        // after a page is shown, so the first clicks may not reach it yet: every click must
        // tell the window, and one of them the page.
        QWindow *window = view.windowHandle();
        int clicks = 0;
        do {
            QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(100, 100));
            ++clicks;
            QCOMPARE(clicked.size(), clicks);
            QCOMPARE(clicked.last().first().value<QWindow *>(), window);
        } while (
            !QTest::qWaitFor([&] { return evaluated(web, u"standIn.clicks"_s).toInt() > 0; }, 500)
            && clicks < 20);
        QVERIFY2(evaluated(web, u"standIn.clicks"_s).toInt() > 0,
                 qPrintable(u"the page saw "_s
                            + evaluated(web, u"JSON.stringify(standIn.events)"_s).toString()));
        const int pageClicks = evaluated(web, u"standIn.clicks"_s).toInt();

        // A double click posts for its first press only; other buttons post nothing.
        QTest::mouseDClick(window, Qt::LeftButton, {}, QPoint(120, 100));
        QCOMPARE(clicked.size(), clicks + 1);
        QTest::mouseClick(window, Qt::RightButton, {}, QPoint(140, 100));
        QCOMPARE(clicked.size(), clicks + 1);
        // The page still gets every press: both of the double click and the right one.
        QTRY_COMPARE_WITH_TIMEOUT(evaluated(web, u"standIn.clicks"_s).toInt(), pageClicks + 3,
                                  10000);
    }
};

QTEST_MAIN(TestYouTubePlayerView)
#include "tst_youtubeplayerview.moc"
