// Which item the player is on, with real libmpv: loads replaced before they start, loads
// followed at once by a stop or by web content, and media that then fails must still be
// reported.
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "testmedia.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

class TestPlayerItems : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    LocalHttpServer m_server;
    quint16 m_closedPort = 0;

    // What the sound server says of the streams playing now.
    static QString soundStreams()
    {
        QProcess pactl;
        pactl.start(QStringLiteral("pactl"),
                    {QStringLiteral("list"), QStringLiteral("sink-inputs")});
        if (!pactl.waitForFinished(10000))
            return {};
        return QString::fromUtf8(pactl.readAllStandardOutput());
    }
    std::unique_ptr<PlayerModel> m_model;

    QUrl mediaFile(const QString &name) const
    {
        return QUrl::fromLocalFile(m_media.filePath(name));
    }

    // Broken media played now must end in its notice, with no item left.
    void brokenMediaIsReported()
    {
        m_model->play(mediaFile(QStringLiteral("fake.mp4")), std::nullopt, false);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), "Could not play fake.mp4.", 15000);
        QVERIFY(!m_model->player().hasItem());
        QVERIFY(!m_model->isPlaying());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("clip.mp4")), 2));
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("long.mp4")), 600, {64, 48}, 1,
                                    false));
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("sound.mp4")), 30));
        QVERIFY(TestMedia::makeRotated(m_media.filePath(QStringLiteral("clip.mp4")),
                                       m_media.filePath(QStringLiteral("upright.mp4")), 90));
        QFile fake(m_media.filePath(QStringLiteral("fake.mp4")));
        QVERIFY(fake.open(QIODevice::WriteOnly));
        fake.write("This is a text file with a video name.\n");
        fake.close();

        QVERIFY(m_server.listen());
        m_server.route(QStringLiteral("/forbidden.mp4"),
                       HttpResponse::text("Forbidden", "text/plain", 403));
        m_server.route(QStringLiteral("/gone.mp4"), HttpResponse::notFound());
        m_server.route(QStringLiteral("/busy.mp4"),
                       HttpResponse::text("Try later", "text/plain", 503));
        // A port nobody listens on: taken, then let go.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        m_closedPort = probe.serverPort();
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
    }

    void cleanup() { m_model.reset(); }

    void aFailureSaysWhyAndLeavesNothingBehind_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing file") << "missing.mp4"
                                      << "The file was not found.";
        QTest::newRow("not media") << "fake.mp4"
                                   << "This is not a media file the player can read.";
        QTest::newRow("404") << "/gone.mp4"
                             << "The server answered 404 Not Found.";
        QTest::newRow("403") << "/forbidden.mp4"
                             << "The server answered 403 Forbidden.";
        QTest::newRow("503") << "/busy.mp4"
                             << "The server answered 503 Service Unavailable.";
        QTest::newRow("refused") << "refused"
                                 << "The server refused the connection.";
    }

    void aFailureSaysWhyAndLeavesNothingBehind()
    {
        QFETCH(QString, address);
        QFETCH(QString, reason);
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isPlaying(), 10000);
        QUrl url;
        if (address == u"refused")
            url = QUrl(QStringLiteral("http://127.0.0.1:%1/clip.mp4").arg(m_closedPort));
        else if (address.startsWith(u'/'))
            url = m_server.url(address);
        else
            url = mediaFile(address);
        m_model->play(url, QStringLiteral("Broken"), false);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), QStringLiteral("Could not play Broken."),
                                  15000);
        QCOMPARE(m_model->toastDetail(), reason);
        // Neither the earlier item nor the failed one stays behind.
        QCOMPARE(m_model->title(), PlayerModel::noMediaTitle.toString());
        QVERIFY(!m_model->player().hasItem());
        QVERIFY(!m_model->isPlaying());
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_model->duration(), 0.0);
        // The reason goes with its notice.
        QTRY_VERIFY_WITH_TIMEOUT(m_model->toastMessage().isNull(), 5000);
        QVERIFY(m_model->toastDetail().isEmpty());
    }

    void twoLoadsBackToBack()
    {
        // The first load is replaced before mpv starts it: mpv never reports its start.
        m_model->play(mediaFile(QStringLiteral("long.mp4")), std::nullopt, false);
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_model->duration() - 2.0) < 0.1, 10000);
        brokenMediaIsReported();
    }

    void aLoadStoppedAtOnce()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        m_model->stop();
        QTest::qWait(300);
        QVERIFY(!m_model->player().hasItem());
        brokenMediaIsReported();
    }

    void aLoadReplacedByWebContent()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        m_model->openRemote(QStringLiteral("https://youtu.be/dQw4w9WgXcQ"), std::nullopt);
        QVERIFY(m_model->youtubeContent());
        QTest::qWait(300);
        QVERIFY(!m_model->player().hasItem());
        brokenMediaIsReported();
    }

    void manyLoadsInARowEndOnTheLast()
    {
        for (int i = 0; i < 5; ++i) {
            m_model->play(mediaFile(QStringLiteral("long.mp4")), std::nullopt, false);
            m_model->stop();
        }
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_model->duration() - 2.0) < 0.1, 10000);
        brokenMediaIsReported();
        // And the player recovers from that too.
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 10000);
        QVERIFY(m_model->player().hasItem());
    }

    void aTurnedVideoHasTheShapeItIsShownIn()
    {
        // Stored 320 × 240 and shown upright, as a phone's clip: 240 × 320 on screen.
        m_model->play(mediaFile(QStringLiteral("upright.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->videoAspectRatio() > 0, 10000);
        QCOMPARE(m_model->player().presentationSize(), QSize(240, 320));
        QVERIFY(qAbs(m_model->videoAspectRatio() - 0.75) < 0.001);
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->player().presentationSize(), QSize(320, 240), 10000);
    }

    void theEarlierItemsTimesNeverShowForTheNewOne()
    {
        m_model->play(mediaFile(QStringLiteral("long.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 500, 10000);
        m_model->skip(300);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->player().position() > 299, 10000);

        MediaPlayer &player = m_model->player();
        QList<double> positions, durations;
        QSignalSpy restarts(&static_cast<MpvPlayer &>(player), &MpvPlayer::playbackRestarted);
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QVERIFY(restarts.isEmpty());
        // Sampled as often as the events come in, until the new item has played a while.
        QVERIFY(QTest::qWaitFor(
            [&] {
                positions.append(player.position());
                durations.append(player.duration().value_or(0));
                return player.position() > 0.5 && player.position() < 3;
            },
            10000));
        for (double seconds : std::as_const(positions))
            QVERIFY2(!(seconds > 3), qPrintable(QString::number(seconds)));
        for (double seconds : std::as_const(durations))
            QVERIFY2(seconds < 3, qPrintable(QString::number(seconds)));
    }

    void theSoundMixerNamesThePlayer()
    {
        // The desktop's sound mixer lists each stream by its client and its name; both are the
        // player's, whatever file plays.
        m_model->play(mediaFile(QStringLiteral("sound.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 15000);
        QString streams;
        QTRY_VERIFY_WITH_TIMEOUT((streams = soundStreams()).contains(u"media.name"), 10000);
        QVERIFY2(streams.contains(u"media.name = \"LumoMediaPlayer\""), qPrintable(streams));
        QVERIFY2(streams.contains(u"application.name = \"LumoMediaPlayer\""), qPrintable(streams));
        QVERIFY2(!streams.contains(u"sound.mp4"), qPrintable(streams));
    }

    void playAtTheEndStartsAgainAndTheStateSaysSo()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isPlaying(), 10000);
        // At the end the last frame stays, and nothing plays.
        QTRY_VERIFY_WITH_TIMEOUT(!m_model->isPlaying(), 10000);
        QVERIFY(m_model->player().hasItem());
        QTest::qWait(300);
        QVERIFY(!m_model->player().isPlaying());
        // Play starts it again from the beginning, and says it plays.
        m_model->togglePlayback();
        QVERIFY(m_model->isPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() < 1.0, 5000);
        QTest::qWait(300);
        QVERIFY(m_model->isPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(!m_model->isPlaying(), 10000);
        // After a seek back from the end, one press plays.
        m_model->seek(1.0);
        QTest::qWait(300);
        QVERIFY(!m_model->isPlaying());
        m_model->togglePlayback();
        QVERIFY(m_model->isPlaying());
        QTest::qWait(300);
        QVERIFY(m_model->isPlaying());
        QVERIFY(m_model->currentTime() >= 1.0);
    }

    void soundWithoutAPictureSaysWhatItIs()
    {
        // An MP3 with tags, one without, then a video: only the sound files are sound only.
        const QString tagged = m_media.filePath(QStringLiteral("tagged.mp3"));
        const QString plain = m_media.filePath(QStringLiteral("plain.mp3"));
        for (const auto &[path, tags] :
             {std::pair {tagged,
                         QStringList {"-metadata", "title=Night Drive", "-metadata",
                                      "artist=The Testers", "-metadata", "album=Loopback"}},
              std::pair {plain, QStringList {}}}) {
            QProcess ffmpeg;
            ffmpeg.start("ffmpeg",
                         QStringList {"-v", "error", "-y", "-f", "lavfi", "-i",
                                      "sine=frequency=440:duration=20"}
                             + tags + QStringList {path});
            QVERIFY(ffmpeg.waitForFinished(60000));
            QCOMPARE(ffmpeg.exitCode(), 0);
        }
        m_model->play(QUrl::fromLocalFile(tagged), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->player().soundOnly().has_value(), 10000);
        QCOMPARE(*m_model->player().soundOnly(),
                 (SoundDescription {"Night Drive", "The Testers", "Loopback"}));
        m_model->play(mediaFile(QStringLiteral("sound.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 10000);
        QVERIFY(!m_model->player().soundOnly());
        m_model->play(QUrl::fromLocalFile(plain), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->player().soundOnly().has_value(), 10000);
        QCOMPARE(*m_model->player().soundOnly(), SoundDescription {});
        m_model->stop();
        QTRY_VERIFY(!m_model->player().soundOnly());
    }
};

QTEST_GUILESS_MAIN(TestPlayerItems)
#include "tst_playeritems.moc"
