// Live channels with real libmpv and a real local server: one whose server goes away comes
// back by itself, with notices of each try; one whose server never returns ends in the usual
// notice; a pause holds the tries; and a dead channel is given up quickly whatever kills it.
#include "httpserver/localhttpserver.h"
#include "model/liverecovery.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "testmedia.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr int segmentCount = 240;
constexpr int transportSeconds = 240;
constexpr qint64 transportPacket = 188;
} // namespace

class TestLiveChannels : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    QElapsedTimer m_liveClock;
    std::unique_ptr<LocalHttpServer> m_server;
    quint16 m_port = 0;
    std::unique_ptr<PlayerModel> m_model;
    QStringList m_notices;
    QByteArray m_transportStream;

    bool startServer()
    {
        m_server = std::make_unique<LocalHttpServer>();
        m_server->serveDirectory(m_media.filePath(QStringLiteral("live")));
        m_server->route(QStringLiteral("/index.m3u8"), [this](const HttpRequest &) {
            return HttpResponse::text(TestMedia::liveIndex(m_liveClock.elapsed(), segmentCount),
                                      "application/vnd.apple.mpegurl");
        });
        // A TV channel over plain HTTP: each request joins the stream where it is by now, and
        // the server cuts every connection after 5 s.
        m_server->route(QStringLiteral("/channel.ts"), [this](const HttpRequest &) {
            const qint64 rate = m_transportStream.size() / transportSeconds;
            const qint64 offset
                = rate * m_liveClock.elapsed() / 1000 / transportPacket * transportPacket;
            HttpResponse response;
            response.contentType = "video/mp2t";
            response.body = m_transportStream.mid(offset % m_transportStream.size());
            response.bytesPerSecond = rate * 3 / 2;
            response.closeAfterMs = 5000;
            return response;
        });
        m_server->route(QStringLiteral("/steady.ts"), [this](const HttpRequest &) {
            HttpResponse response;
            response.contentType = "video/mp2t";
            response.body = m_transportStream;
            response.bytesPerSecond = m_transportStream.size() / transportSeconds * 3 / 2;
            return response;
        });
        m_server->route(QStringLiteral("/gone.m3u8"), HttpResponse::notFound());
        HttpResponse silence;
        silence.neverAnswer = true;
        m_server->route(QStringLiteral("/silent.m3u8"), silence);
        if (!m_server->listen(m_port))
            return false;
        m_port = m_server->port();
        return true;
    }

    QUrl address(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
    }

    // Plays the live channel until it moves.
    bool playLive()
    {
        m_model->play(address(QStringLiteral("/index.m3u8")), QStringLiteral("Live"), true);
        double first = -1;
        return QTest::qWaitFor(
            [&] {
                if (!m_model->isPlaying() || m_model->currentTime() <= 0)
                    return false;
                if (first < 0)
                    first = m_model->currentTime();
                return m_model->currentTime() > first + 1;
            },
            20000);
    }

    bool movesAgain(int timeoutMs)
    {
        double seen = -1;
        return QTest::qWaitFor(
            [&] {
                const double now = m_model->currentTime();
                if (!m_model->isPlaying() || now <= 0 || m_model->isBuffering())
                    return false;
                if (seen < 0 || now < seen)
                    seen = now;
                return now > seen + 1;
            },
            timeoutMs);
    }

    bool noticed(QStringView prefix) const
    {
        return std::any_of(m_notices.cbegin(), m_notices.cend(),
                           [&](const QString &notice) { return notice.startsWith(prefix); });
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        QVERIFY(TestMedia::makeSegments(m_media.filePath(QStringLiteral("live")), segmentCount));
        QFile stream(m_media.filePath(QStringLiteral("channel.ts")));
        QVERIFY(TestMedia::makeTransportStream(stream.fileName(), transportSeconds));
        QVERIFY(stream.open(QIODevice::ReadOnly));
        m_transportStream = stream.readAll();
        m_liveClock.start();
    }

    void init()
    {
        QVERIFY(startServer());
        m_notices.clear();
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        connect(m_model.get(), &PlayerModel::toastMessageChanged, this, [this] {
            if (!m_model->toastMessage().isNull())
                m_notices.append(m_model->toastMessage());
        });
    }

    void cleanup()
    {
        m_model.reset();
        m_server.reset();
    }

    void aChannelComesBackAfterItsServerWasAway()
    {
        QVERIFY(playLive());
        const QSize shape = m_model->player().presentationSize();
        m_server.reset();
        // It stands still, is tried again and says so, and stays buffering meanwhile.
        QTRY_VERIFY_WITH_TIMEOUT(noticed(LiveRecovery::notice(1)), 30000);
        QVERIFY(m_model->isBuffering());
        QVERIFY(m_model->isPlaying());
        QCOMPARE(m_model->title(), QStringLiteral("Live"));
        QTest::qWait(25000 - 10000);
        QVERIFY(!noticed(u"Could not play"));
        QVERIFY(startServer());
        // Back without a click: it moves again, no longer buffering.
        QVERIFY(movesAgain(60000));
        QVERIFY(m_model->isPlaying());
        QCOMPARE(m_model->title(), QStringLiteral("Live"));
        QCOMPARE(m_model->videoAspectRatio(), double(shape.width()) / shape.height());
        QVERIFY(!noticed(u"Could not play"));
    }

    void aChannelWhoseServerNeverReturnsEndsInTheNotice()
    {
        QVERIFY(playLive());
        m_server.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), QStringLiteral("Could not play Live."),
                                  90000);
        for (int attempt = 1; attempt <= LiveRecovery::attempts; ++attempt)
            QVERIFY2(m_notices.contains(LiveRecovery::notice(attempt)),
                     qPrintable(m_notices.join(u'|')));
        QVERIFY(!m_model->isPlaying());
        QVERIFY(!m_model->isBuffering());
        QVERIFY(!m_model->player().hasItem());
    }

    void aPauseDuringAnOutageHoldsTheTries()
    {
        QVERIFY(playLive());
        m_server.reset();
        m_model->togglePlayback();
        QVERIFY(!m_model->isPlaying());
        QTest::qWait(LiveRecovery::stallMs + 6000);
        QVERIFY2(!noticed(u"Reconnecting"), qPrintable(m_notices.join(u'|')));
        QVERIFY(!noticed(u"Could not play"));
        // Played again, it is brought back.
        QVERIFY(startServer());
        m_model->togglePlayback();
        QVERIFY(movesAgain(40000));
    }

    void aPlainHttpChannelCutMidwayPlaysOn()
    {
        m_model->play(address(QStringLiteral("/channel.ts")), QStringLiteral("TV"), true);
        QVERIFY(movesAgain(20000));
        const double start = m_model->currentTime();
        // Past two cuts of the connection.
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > start + 12, 60000);
        QVERIFY(m_server->requestCount(QStringLiteral("/channel.ts")) >= 3);
        QVERIFY(m_model->isPlaying());
        QVERIFY2(!noticed(u"Could not play"), qPrintable(m_notices.join(u'|')));
    }

    void aReplacedChannelsConnectionIsClosed()
    {
        m_model->play(address(QStringLiteral("/steady.ts")), QStringLiteral("Steady"), true);
        QVERIFY(movesAgain(20000));
        QCOMPARE(m_server->openConnectionCount(QStringLiteral("/steady.ts")), 1);
        m_model->play(address(QStringLiteral("/index.m3u8")), QStringLiteral("Live"), true);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnectionCount(QStringLiteral("/steady.ts")), 0,
                                  1000);
        QVERIFY(movesAgain(20000));
    }

    void deadChannelsAreGivenUpQuickly_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("refused") << QStringLiteral("refused");
        QTest::newRow("404") << QStringLiteral("/gone.m3u8");
        QTest::newRow("no answer") << QStringLiteral("/silent.m3u8");
        QTest::newRow("closed at once") << QStringLiteral("closing");
    }

    void deadChannelsAreGivenUpQuickly()
    {
        QFETCH(QString, path);
        QTcpServer closing;
        QUrl url;
        if (path == u"refused") {
            QTcpServer probe;
            QVERIFY(probe.listen(QHostAddress::LocalHost));
            url = QUrl(QStringLiteral("http://127.0.0.1:%1/dead.m3u8").arg(probe.serverPort()));
        } else if (path == u"closing") {
            QVERIFY(closing.listen(QHostAddress::LocalHost));
            connect(&closing, &QTcpServer::newConnection, this, [&closing] {
                while (QTcpSocket *socket = closing.nextPendingConnection())
                    socket->abort();
            });
            url = QUrl(QStringLiteral("http://127.0.0.1:%1/dead.m3u8").arg(closing.serverPort()));
        } else {
            url = address(path);
        }
        m_model->play(url, QStringLiteral("Dead"), true);
        // mpv gives a silent server 10 s; the notice comes well within the time a user waits.
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), QStringLiteral("Could not play Dead."),
                                  15000);
        QVERIFY(!noticed(u"Reconnecting"));
        QVERIFY(!m_model->isPlaying());
    }
};

QTEST_GUILESS_MAIN(TestLiveChannels)
#include "tst_livechannels.moc"
