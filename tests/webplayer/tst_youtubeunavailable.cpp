// The web player when the video service cannot be reached, in real Qt WebEngine: its script
// fails to load, or loads but never makes the player. The user is told instead of being left
// with a black picture. The script's address is redirected to loopback, as in the other tests.
#include "apiscriptredirect.h"
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "surface/playersurface.h"
#include "webplayer/youtubepage.h"
#include "webplayer/youtubeplayerregistry.h"
#include "webplayer/youtubeplayerview.h"

#include <QFile>
#include <QTest>
#include <QWebEngineProfile>

using namespace Qt::StringLiterals;

namespace {

const QString unavailable = QStringLiteral("Could not load the YouTube player.");
constexpr int readyTimeoutMs = 2000;

} // namespace

class TestYouTubeUnavailable : public QObject
{
    Q_OBJECT

private:
    LocalHttpServer m_server;
    ApiScriptRedirect m_redirect;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerSurface> m_surface;

    void open(const QString &scriptPath, int timeoutMs = readyTimeoutMs)
    {
        m_redirect.target = m_server.url(scriptPath);
        m_surface->setWebPlayerViewFactory([timeoutMs](QWidget *parent) -> WebPlayerView * {
            auto *view = new YouTubePlayerView(parent);
            view->setPlayerReadyTimeout(timeoutMs);
            return view;
        });
        m_model->openRemote(QStringLiteral("https://youtu.be/abc123"), std::nullopt);
        QVERIFY(m_model->youtubeContent());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QFile script(QStringLiteral(LUMO_SOURCE_DIR "/tests/webplayer/fixtures/iframe_api.js"));
        QVERIFY(script.open(QIODevice::ReadOnly));
        m_server.route(u"/iframe_api"_s, HttpResponse::text(script.readAll(), "text/javascript"));
        // Loads and sets up its namespace, but never calls back: as when the service's own
        // player script never arrives.
        m_server.route(u"/silent.js"_s,
                       HttpResponse::text("window.YT = { loading: 1 };\n", "text/javascript"));
        QVERIFY(m_server.listen());
        QWebEngineProfile::defaultProfile()->setUrlRequestInterceptor(&m_redirect);
        qunsetenv(YouTubePage::webOriginVariable);
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_model->setWebPlayerScripts(&YouTubePlayerRegistry::shared());
        m_surface = std::make_unique<PlayerSurface>(*m_model);
        m_surface->resize(480, 270);
        m_surface->show();
    }

    void cleanup()
    {
        m_surface.reset();
        m_model.reset();
    }

    void theDefaultWaitIsFifteenSeconds()
    {
        QCOMPARE(YouTubePlayerView::playerReadyTimeoutMs, 15'000);
    }

    void aScriptThatCannotLoadIsToldAtOnce()
    {
        // The wait is long here: the failed script alone must be enough.
        open(QStringLiteral("/missing.js"), 60'000);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->errorMessage(), unavailable, 20'000);
        QVERIFY(m_model->youtubeContent());
    }

    void aPlayerThatNeverArrivesIsToldAfterTheWait()
    {
        open(QStringLiteral("/silent.js"));
        QTest::qWait(readyTimeoutMs / 2);
        QVERIFY(m_model->errorMessage().isNull());
        QTRY_COMPARE_WITH_TIMEOUT(m_model->errorMessage(), unavailable, 20'000);
    }

    void aPlayerThatArrivesSaysNothing()
    {
        open(QStringLiteral("/iframe_api"));
        QTest::qWait(readyTimeoutMs + 3000);
        QVERIFY(m_model->errorMessage().isNull());
    }

    void aFailureOfContentNoLongerShownSaysNothing()
    {
        open(QStringLiteral("/silent.js"));
        QTest::qWait(300);
        m_model->stop(); // the web player goes before its wait ends
        QTest::qWait(readyTimeoutMs + 1000);
        QVERIFY(m_model->errorMessage().isNull());
    }
};

QTEST_MAIN(TestYouTubeUnavailable)
#include "tst_youtubeunavailable.moc"
