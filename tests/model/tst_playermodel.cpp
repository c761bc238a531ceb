// The player model with real libmpv, real media made by ffmpeg, and playlists and streams from a
// real local HTTP server.
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "recordingwebplayer.h"
#include "testmedia.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <mpv/client.h>

namespace {

QByteArray playlistText(const QStringList &names)
{
    QByteArray text = "#EXTM3U\n";
    for (const QString &name : names)
        text += "#EXTINF:-1 group-title=\"News\"," + name.toUtf8() + "\nhttp://127.0.0.1:9/"
            + name.toUtf8() + ".m3u8\n";
    return text;
}

QStringList names(const QList<PlaylistEntry> &entries)
{
    QStringList result;
    for (const PlaylistEntry &entry : entries)
        result.append(entry.name());
    return result;
}

quint16 closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort(); // closed again when server goes
}

} // namespace

class TestPlayerModel : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    LocalHttpServer m_server;
    QElapsedTimer m_liveClock;
    std::unique_ptr<PlayerModel> m_model;
    RecordingWebPlayer m_web;

    QUrl mediaFile(const QString &name) const
    {
        return QUrl::fromLocalFile(m_media.filePath(name));
    }
    MpvPlayer &mpv() const { return static_cast<MpvPlayer &>(m_model->player()); }
    double mpvDouble(const char *name) const
    {
        double value = qQNaN();
        mpv_get_property(mpv().handle(), name, MPV_FORMAT_DOUBLE, &value);
        return value;
    }
    bool mpvFlag(const char *name) const
    {
        int value = 0;
        mpv_get_property(mpv().handle(), name, MPV_FORMAT_FLAG, &value);
        return value != 0;
    }
    void playAndWaitForDuration(const QString &name)
    {
        m_model->play(mediaFile(name), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 0, 10000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("clip.mp4")), 2));
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("long.mp4")), 600, {64, 48}, 1,
                                    false));
        QVERIFY(QFile::copy(m_media.filePath(QStringLiteral("clip.mp4")),
                            m_media.filePath(QStringLiteral("my clip.mp4"))));
        QVERIFY(QFile::copy(m_media.filePath(QStringLiteral("clip.mp4")),
                            m_media.filePath(QStringLiteral("held.mp4"))));
        QFile fake(m_media.filePath(QStringLiteral("fake.mp4")));
        QVERIFY(fake.open(QIODevice::WriteOnly));
        fake.write("This is a text file with a video name.\n");
        fake.close();
        QVERIFY(TestMedia::makeSegments(m_media.filePath(QStringLiteral("live")), 60));

        m_server.serveDirectory(m_media.path());
        m_liveClock.start();
        m_server.route(QStringLiteral("/live/index.m3u8"), [this](const HttpRequest &) {
            return HttpResponse::text(TestMedia::liveIndex(m_liveClock.elapsed(), 60),
                                      "application/vnd.apple.mpegurl");
        });
        m_server.route(QStringLiteral("/list.m3u"),
                       HttpResponse::text(playlistText({"One", "Two"})
                                          + "#EXTINF:-1,Three\nchannels/three.m3u8\n"));
        m_server.route(QStringLiteral("/latin1.m3u"),
                       HttpResponse::text("#EXTM3U\n#EXTINF:-1,T\xe9l\xe9 Qu\xe9"
                                          "bec\nhttp://127.0.0.1:9/tq.m3u8\n"));
        m_server.route(QStringLiteral("/empty.m3u"),
                       HttpResponse::text("#EXTM3U\n#EXTINF:-1,No address\n"));
        HttpResponse slow = HttpResponse::text(playlistText({"Slow A", "Slow B"}));
        slow.delayMs = 1500;
        m_server.route(QStringLiteral("/slow.m3u"), slow);
        m_server.route(QStringLiteral("/fast.m3u"),
                       HttpResponse::text(playlistText({"Fast A", "Fast B", "Fast C"})));
        HttpResponse silent;
        silent.neverAnswer = true;
        m_server.route(QStringLiteral("/silent.m3u"), silent);
        // Headers at once, then a byte only after a long silence.
        HttpResponse headersOnly = HttpResponse::text(playlistText({"Late"}));
        headersOnly.dripIntervalMs = 5000;
        m_server.route(QStringLiteral("/headers-only.m3u"), headersOnly);
        m_server.route(QStringLiteral("/loop.m3u"), HttpResponse::redirect("/loop2.m3u"));
        m_server.route(QStringLiteral("/loop2.m3u"), HttpResponse::redirect("/loop.m3u"));
        HttpResponse huge = HttpResponse::text("#EXTINF:-1,Endless\nhttp://127.0.0.1:9/x.ts\n");
        huge.generatedBytes = qint64(1) << 30;
        m_server.route(QStringLiteral("/huge.m3u"), huge);
        QByteArray big = "#EXTM3U\n";
        for (int i = 0; i < 200'000; ++i)
            big += "#EXTINF:-1 tvg-id=\"c" + QByteArray::number(i) + ".us\",Channel "
                + QByteArray::number(i) + "\nhttp://127.0.0.1:9/c/" + QByteArray::number(i)
                + ".m3u8\n";
        m_server.route(QStringLiteral("/big.m3u"), HttpResponse::text(big));
        QVERIFY(m_server.listen());
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_web.scripts.clear();
        m_server.hold(QRegularExpression());
    }

    void cleanup() { m_model.reset(); }

    void construction()
    {
        QCOMPARE(m_model->title(), "No Media Selected");
        QCOMPARE(m_model->volume(), 1.0);
        QVERIFY(!m_model->isMuted());
        QVERIFY(!m_model->isPlaying());
        QVERIFY(!m_model->isLoading());
        QVERIFY(!m_model->isLiveStream());
        QVERIFY(!m_model->isBuffering());
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_model->duration(), 0.0);
        QCOMPARE(m_model->videoAspectRatio(), 0.0);
        QVERIFY(m_model->errorMessage().isNull());
        QVERIFY(m_model->toastMessage().isNull());
        QVERIFY(m_model->playlist().isEmpty());
        QVERIFY(!m_model->youtubeContent());
        QVERIFY(!m_model->lastPlayableSource());
        QVERIFY(!m_model->player().hasItem());
        QCOMPARE(mpvDouble("volume"), 100.0);
        // Video is drawn on the interface thread, which must not wait inside mpv for the
        // moment to show a frame.
        QCOMPARE(mpvDouble("video-timing-offset"), 0.0);
        // Entries of playlists that mpv itself expands never reach local or special protocols.
        QVERIFY(!mpvFlag("load-unsafe-playlists"));
    }

    void playingALocalFile()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QCOMPARE(m_model->title(), "clip.mp4");
        QVERIFY(m_model->isPlaying());
        QVERIFY(!m_model->isLiveStream());
        QVERIFY(m_model->lastPlayableSource()
                == LastPlayableSource(LastPlayableMedia {mediaFile(QStringLiteral("clip.mp4")),
                                                         QStringLiteral("clip.mp4"), false}));
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_model->videoAspectRatio() - 320.0 / 240) < 0.001, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_model->duration() - 2.0) < 0.1, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 10000);
        QVERIFY(m_model->toastMessage().isNull());
    }

    void titles()
    {
        m_model->play(mediaFile(QStringLiteral("my clip.mp4")), std::nullopt, false);
        QCOMPARE(m_model->title(), "my clip.mp4");
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), QString(""), false);
        QCOMPARE(m_model->title(), "");
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), QStringLiteral("Named"), false);
        QCOMPARE(m_model->title(), "Named");
        // A last component that is not UTF-8 once decoded: the whole address stands in.
        const QUrl odd = QUrl::fromEncoded("http://127.0.0.1:9/a%FF.ts");
        m_model->play(odd, std::nullopt, true);
        QCOMPARE(m_model->title(), "http://127.0.0.1:9/a%FF.ts");
        // Radio servers are often addressed by their root: the host names them.
        m_model->play(QUrl(QStringLiteral("http://radio.invalid:8000/")), std::nullopt, true);
        QCOMPARE(m_model->title(), "radio.invalid");
        m_model->play(QUrl(QStringLiteral("http://radio.invalid:8000")), std::nullopt, true);
        QCOMPARE(m_model->title(), "radio.invalid");
        m_model->play(QUrl(QStringLiteral("http://[::1]:8000/")), std::nullopt, true);
        QCOMPARE(m_model->title(), "::1");
    }

    void aFileThatPlaysToItsEnd()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 0, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!m_model->isPlaying(), 15000);
        // The last frame stays: the item is still there, at its end, with its title.
        QVERIFY(m_model->player().hasItem());
        QVERIFY(qAbs(m_model->currentTime() - m_model->duration()) < 0.2);
        QCOMPARE(m_model->title(), "clip.mp4");
        QVERIFY(m_model->toastMessage().isNull());
        QVERIFY(!m_model->isBuffering());
        m_model->skip(-1);
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(mpvDouble("time-pos") - (m_model->duration() - 1)) < 0.1,
                                 10000);
    }

    void togglePlayback()
    {
        m_model->togglePlayback(); // no item: nothing happens
        QVERIFY(!m_model->isPlaying());
        QVERIFY(!m_model->player().hasItem());
        playAndWaitForDuration(QStringLiteral("long.mp4"));
        m_model->togglePlayback();
        QVERIFY(!m_model->isPlaying());
        QTRY_VERIFY(mpvFlag("pause"));
        m_model->togglePlayback();
        QVERIFY(m_model->isPlaying());
        QTRY_VERIFY(!mpvFlag("pause"));
    }

    void skipsAreClampedToTheDuration()
    {
        playAndWaitForDuration(QStringLiteral("long.mp4"));
        m_model->togglePlayback();
        const double duration = m_model->duration();
        QVERIFY(qAbs(duration - 600) < 1);
        m_model->skip(-1000);
        QCOMPARE(m_model->currentTime(), 0.0);
        m_model->skip(300);
        QCOMPARE(m_model->currentTime(), 300.0);
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(mpvDouble("time-pos") - 300) < 0.05, 10000);
        m_model->skip(-20);
        QCOMPARE(m_model->currentTime(), 280.0);
        m_model->skip(1000);
        QCOMPARE(m_model->currentTime(), duration);
        m_model->skip(-5000);
        QCOMPARE(m_model->currentTime(), 0.0);
    }

    void everySkipLandsAtZeroWhileTheDurationIsUnknown()
    {
        QCOMPARE(m_model->duration(), 0.0);
        m_model->skip(10);
        QCOMPARE(m_model->currentTime(), 0.0);
        m_model->skip(-10);
        QCOMPARE(m_model->currentTime(), 0.0);
    }

    void volumeAndMute()
    {
        playAndWaitForDuration(QStringLiteral("clip.mp4"));
        m_model->setVolume(0);
        QVERIFY(m_model->isMuted());
        QVERIFY(mpvFlag("mute"));
        QCOMPARE(mpvDouble("volume"), 0.0);
        m_model->setVolume(0.5);
        QVERIFY(!m_model->isMuted());
        QVERIFY(!mpvFlag("mute"));
        QCOMPARE(mpvDouble("volume"), 50.0);
        m_model->setVolume(1.5);
        QCOMPARE(m_model->volume(), 1.5);
        QCOMPARE(mpvDouble("volume"), 100.0);
        m_model->toggleMute();
        QVERIFY(m_model->isMuted());
        QVERIFY(mpvFlag("mute"));
        m_model->toggleMute();
        QVERIFY(!mpvFlag("mute"));
    }

    void stop()
    {
        playAndWaitForDuration(QStringLiteral("clip.mp4"));
        m_model->stop();
        QCOMPARE(m_model->title(), "No Media Selected");
        QVERIFY(!m_model->isPlaying());
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_model->duration(), 0.0);
        QVERIFY(!m_model->player().hasItem());
        QTest::qWait(600); // the periodic observer keeps the stopped state
        QCOMPARE(m_model->duration(), 0.0);
        QVERIFY(!m_model->isPlaying());
    }

    void anUnusableAddress()
    {
        m_model->openRemote(QStringLiteral("ftp://example.com/list.m3u"), std::nullopt);
        QCOMPARE(m_model->errorMessage(), "Enter a valid HTTP or HTTPS address.");
        QCOMPARE(m_model->title(), "No Media Selected");
        QVERIFY(!m_model->isLoading());
        m_model->openRemote(QStringLiteral("   "), std::nullopt);
        QCOMPARE(m_model->errorMessage(), "Enter a valid HTTP or HTTPS address.");
    }

    void videoServiceContentTakesTheWebRoute()
    {
        m_model->setWebPlayerScripts(&m_web);
        playAndWaitForDuration(QStringLiteral("clip.mp4"));
        m_model->openRemote(QStringLiteral("https://youtu.be/dQw4w9WgXcQ"), QStringLiteral("Song"));
        QVERIFY(m_model->youtubeContent());
        QCOMPARE(m_model->youtubeContent()->videoID(), "dQw4w9WgXcQ");
        QCOMPARE(m_model->title(), "Song");
        QVERIFY(!m_model->player().hasItem());
        QVERIFY(!m_model->isLiveStream());
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_model->duration(), 0.0);
        QVERIFY(m_model->lastPlayableSource()
                == LastPlayableSource(
                    LastPlayableYouTube {*m_model->youtubeContent(), QStringLiteral("Song")}));

        const bool wasPlaying = m_model->isPlaying();
        m_model->togglePlayback();
        QCOMPARE(m_model->isPlaying(), !wasPlaying);
        m_model->skip(-30);
        m_model->setVolume(1.5);
        QCOMPARE(m_model->volume(), 1.5);
        m_model->setVolume(0);
        QVERIFY(m_model->isMuted());
        m_model->toggleMute();
        const QStringList expected {"lumoToggle();", "lumoSkip(-30);", "lumoSetVolume(1);",
                                    "lumoSetVolume(0);", "lumoSetMuted(false);"};
        QCOMPARE(m_web.scripts, expected);
        // The media player is left alone, and the observer does not overwrite the page's state.
        QCOMPARE(mpvDouble("volume"), 100.0);
        QTest::qWait(600);
        QCOMPARE(m_model->currentTime(), 0.0);

        m_model->stop();
        QVERIFY(!m_model->youtubeContent());
        QCOMPARE(m_model->title(), "No Media Selected");
    }

    void videoServiceWithoutAPageDropsCommands()
    {
        m_model->openRemote(QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ"),
                            std::nullopt);
        QVERIFY(m_model->youtubeContent());
        QCOMPARE(m_model->title(), "No Media Selected"); // no name given: the title stays
        m_model->togglePlayback();
        m_model->skip(10);
        QVERIFY(m_web.scripts.isEmpty());
    }

    void streamsFromTheServer()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/clip.mp4")).toString(), std::nullopt);
        QCOMPARE(m_model->title(), "clip.mp4");
        QVERIFY(!m_model->isLiveStream());
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(m_model->duration() - 2.0) < 0.1, 10000);

        m_model->openRemote(m_server.url(QStringLiteral("/live/index.m3u8")).toString(),
                            QStringLiteral("Live"));
        QVERIFY(m_model->isLiveStream());
        QCOMPARE(m_model->title(), "Live");
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.5, 15000);
        QCOMPARE(m_model->duration(), 0.0);
        m_model->skip(30);
        QCOMPARE(m_model->currentTime(), 0.0);
    }

    void aPlaylistIsDownloadedAndPublished()
    {
        QSignalSpy loading(m_model.get(), &PlayerModel::isLoadingChanged);
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QVERIFY(m_model->isLoading());
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 3, 10000);
        QVERIFY(!m_model->isLoading());
        QCOMPARE(loading.size(), 2);
        QCOMPARE(m_model->title(), "IPTV Playlist");
        QVERIFY(m_model->errorMessage().isNull());
        QCOMPARE(m_model->playlist()[2].url(),
                 m_server.url(QStringLiteral("/channels/three.m3u8")));
        QVERIFY(!m_model->player().hasItem()); // the first channel does not start by itself

        m_model->openRemote(m_server.url(QStringLiteral("/latin1.m3u")).toString(),
                            QStringLiteral("Québec"));
        QTRY_COMPARE_WITH_TIMEOUT(names(m_model->playlist()), QStringList {"Télé Québec"}, 10000);
        QCOMPARE(m_model->title(), "Québec");
    }

    void aNetworkStreamKeepsAFewTensOfSecondsInMemory()
    {
        // mpv's own defaults keep up to 200 MB of a stream that plays for hours.
        m_model->openRemote(m_server.url(QStringLiteral("/live/index.m3u8")).toString(),
                            QStringLiteral("Live"));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.5, 15000);
        qint64 ahead = 0;
        qint64 behind = 0;
        mpv_get_property(mpv().handle(), "demuxer-max-bytes", MPV_FORMAT_INT64, &ahead);
        mpv_get_property(mpv().handle(), "demuxer-max-back-bytes", MPV_FORMAT_INT64, &behind);
        QVERIFY2(ahead > 0 && ahead <= 48 * 1024 * 1024, QByteArray::number(ahead));
        QVERIFY2(behind > 0 && behind <= 16 * 1024 * 1024, QByteArray::number(behind));
        const double seconds = mpvDouble("cache-secs");
        QVERIFY2(seconds >= 10 && seconds <= 60, QByteArray::number(seconds));
        // A live stream never fills the space ahead; mpv would lend that space to the played
        // part and keep up to the sum of both limits behind.
        QVERIFY(!mpvFlag("demuxer-donate-buffer"));
        // A local file reads from the disk as it plays and keeps mpv's defaults.
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 0, 10000);
        mpv_get_property(mpv().handle(), "demuxer-max-bytes", MPV_FORMAT_INT64, &ahead);
        QCOMPARE(ahead, qint64(150) * 1024 * 1024);
    }

    void scalersDrawOnSoftwareOpenGL()
    {
        // mpv 0.36 and later default to scalers that draw black or striped pictures on
        // software OpenGL (llvmpipe: virtual machines, Xvfb); bilinear draws on every OpenGL.
        for (const char *name : {"scale", "dscale"}) {
            char *value = mpv_get_property_string(mpv().handle(), name);
            const QByteArray scaler(value);
            mpv_free(value);
            QCOMPARE(scaler, QByteArrayLiteral("bilinear"));
        }
    }

    void playlistFailures_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("message");
        QTest::newRow("404") << m_server.url(QStringLiteral("/missing.m3u")).toString()
                             << "Could not open playlist: The server returned an error (404).";
        QTest::newRow("no entry") << m_server.url(QStringLiteral("/empty.m3u")).toString()
                                  << "Could not open playlist: No playable address was found in "
                                     "the playlist.";
        QTest::newRow("silent server") << m_server.url(QStringLiteral("/silent.m3u")).toString()
                                       << "Could not open playlist: The request timed out.";
        QTest::newRow("server silent after its headers")
            << m_server.url(QStringLiteral("/headers-only.m3u")).toString()
            << "Could not open playlist: The request timed out.";
        QTest::newRow("closed port")
            << QStringLiteral("http://127.0.0.1:%1/list.m3u").arg(closedPort())
            << "Could not open playlist: Could not connect to the server.";
        QTest::newRow("redirect loop")
            << m_server.url(QStringLiteral("/loop.m3u")).toString()
            << "Could not open playlist: The server redirected too many times.";
        QTest::newRow("1 GB body")
            << m_server.url(QStringLiteral("/huge.m3u")).toString()
            << "Could not open playlist: The playlist is larger than 128 MB.";
    }

    void playlistFailures()
    {
        QFETCH(QString, address);
        QFETCH(QString, message);
        // A short limit stands in for the 20 s of silence.
        PlaylistDownloadLimits limits;
        limits.idleTimeoutMs = 1500;
        m_model->setPlaylistDownloadLimits(limits);
        m_model->openRemote(address, std::nullopt);
        QVERIFY(m_model->isLoading());
        QTRY_COMPARE_WITH_TIMEOUT(m_model->errorMessage(), message, 30000);
        QVERIFY(!m_model->isLoading());
        QVERIFY(m_model->playlist().isEmpty());
        QCOMPARE(m_model->title(), "No Media Selected");
    }

    void theDefaultLimits()
    {
        const PlaylistDownloadLimits limits;
        QCOMPARE(limits.idleTimeoutMs, 20'000);
        QCOMPARE(limits.maxBytes, qint64(128) * 1024 * 1024);
    }

    void aPlaylistOf200000Channels()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/big.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 200'000, 60000);
        QCOMPARE(m_model->playlist().constLast().name(), "Channel 199999");
        QCOMPARE(m_model->playlist().constLast().countryCode(), "US");
    }

    void onlyTheLatestRequestPublishes_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("first answer arrives last") << "/slow.m3u"
                                                   << "/fast.m3u";
        QTest::newRow("first answer arrives first") << "/fast.m3u"
                                                    << "/slow.m3u";
    }

    void onlyTheLatestRequestPublishes()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        const int firstCount = m_server.requestCount(first);
        m_model->openRemote(m_server.url(first).toString(), QStringLiteral("First"));
        QTRY_COMPARE_WITH_TIMEOUT(m_server.requestCount(first), firstCount + 1, 5000);
        m_model->openRemote(m_server.url(second).toString(), QStringLiteral("Second"));
        const QStringList expected = second == QLatin1String("/fast.m3u")
            ? QStringList {"Fast A", "Fast B", "Fast C"}
            : QStringList {"Slow A", "Slow B"};
        QTRY_COMPARE_WITH_TIMEOUT(names(m_model->playlist()), expected, 10000);
        QCOMPARE(m_model->title(), "Second");
        QTest::qWait(2000); // the other answer is in by now, and changed nothing
        QCOMPARE(names(m_model->playlist()), expected);
        QCOMPARE(m_model->title(), "Second");
        QVERIFY(!m_model->isLoading());
    }

    void clearingDropsAPendingLoad()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 3, 10000);
        m_model->openRemote(m_server.url(QStringLiteral("/slow.m3u")).toString(), std::nullopt);
        m_model->clearNetworkStream();
        QVERIFY(m_model->playlist().isEmpty());
        QVERIFY(!m_model->isLoading());
        QVERIFY(m_model->errorMessage().isNull());
        QCOMPARE(m_model->title(), "No Media Selected");
        QTest::qWait(2000);
        QVERIFY(m_model->playlist().isEmpty());
        // A local file stays replayable.
        QVERIFY(m_model->lastPlayableSource());
    }

    void clearingForgetsARemoteSource()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/clip.mp4")).toString(), std::nullopt);
        QVERIFY(m_model->lastPlayableSource());
        m_model->clearNetworkStream();
        QVERIFY(!m_model->lastPlayableSource());
        m_model->openRemote(QStringLiteral("https://youtu.be/dQw4w9WgXcQ"), std::nullopt);
        m_model->discardLastRemoteSource();
        QVERIFY(!m_model->lastPlayableSource());
    }

    void replayWithNothingPlayedShowsANotice()
    {
        m_model->replayLastSourceOrShowToast();
        QCOMPARE(m_model->toastMessage(),
                 "No media or URL is available. Open a file or enter a stream URL.");
        QCOMPARE(m_model->title(), "No Media Selected");
        QVERIFY(!m_model->isPlaying());
        QVERIFY(m_model->errorMessage().isNull());
        QVERIFY(!m_model->player().hasItem());
    }

    void replayOpensTheLastSourceAgain()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), QStringLiteral("Again"), false);
        m_model->stop();
        m_model->replayLastSourceOrShowToast();
        QCOMPARE(m_model->title(), "Again");
        QVERIFY(m_model->isPlaying());
        QVERIFY(m_model->player().hasItem());

        m_model->openRemote(QStringLiteral("https://youtu.be/dQw4w9WgXcQ"), QStringLiteral("Vid"));
        m_model->stop();
        m_model->replayLastSourceOrShowToast();
        QVERIFY(m_model->youtubeContent());
        QCOMPARE(m_model->title(), "Vid");
    }

    void renamingALiveStream()
    {
        m_model->play(mediaFile(QStringLiteral("clip.mp4")), std::nullopt, false);
        m_model->updateStreamTitle(QStringLiteral("Ignored"));
        QCOMPARE(m_model->title(), "clip.mp4");
        m_model->play(m_server.url(QStringLiteral("/live/index.m3u8")), std::nullopt, true);
        m_model->updateStreamTitle(QStringLiteral("  News 24 \n"));
        QCOMPARE(m_model->title(), "News 24");
        m_model->updateStreamTitle(QStringLiteral(" \n\t"));
        QCOMPARE(m_model->title(), "LumoMediaPlayerPro");
    }

    void mediaThatCannotPlay_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QString>("notice");
        QTest::newRow("text renamed .mp4")
            << mediaFile(QStringLiteral("fake.mp4")) << "Could not play fake.mp4.";
        QTest::newRow("missing file")
            << mediaFile(QStringLiteral("missing.mp4")) << "Could not play missing.mp4.";
        QTest::newRow("closed port")
            << QUrl(QStringLiteral("http://127.0.0.1:%1/live.m3u8").arg(closedPort()))
            << "Could not play live.m3u8.";
        QTest::newRow("404 stream")
            << m_server.url(QStringLiteral("/gone.mp4")) << "Could not play gone.mp4.";
    }

    void mediaThatCannotPlay()
    {
        QFETCH(QUrl, url);
        QFETCH(QString, notice);
        m_model->play(url, std::nullopt, url.path().endsWith(QLatin1String(".m3u8")));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), notice, 30000);
        QVERIFY(!m_model->isPlaying());
        QVERIFY(!m_model->isBuffering());
        QVERIFY(!m_model->player().hasItem());
        // The player recovers: the next file plays.
        playAndWaitForDuration(QStringLiteral("clip.mp4"));
    }

    void aStalledLiveStreamShowsBuffering()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/live/index.m3u8")).toString(),
                            std::nullopt);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.5, 15000);
        QVERIFY(!m_model->isBuffering());
        m_server.hold(QRegularExpression(QStringLiteral("^/live/seg")));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isBuffering(), 30000);
        m_server.hold(QRegularExpression());
        QTRY_VERIFY_WITH_TIMEOUT(!m_model->isBuffering(), 30000);
    }

    void aStalledFileNeverShowsBuffering()
    {
        m_server.hold(QRegularExpression(QStringLiteral("^/held.mp4")));
        m_model->openRemote(m_server.url(QStringLiteral("/held.mp4")).toString(), std::nullopt);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->player().isWaitingToPlay(), 5000);
        QTest::qWait(1500);
        QVERIFY(m_model->player().isWaitingToPlay());
        QVERIFY(!m_model->isBuffering());
        m_server.hold(QRegularExpression());
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 10000);
        QVERIFY(!m_model->isBuffering());
    }
};

QTEST_GUILESS_MAIN(TestPlayerModel)
#include "tst_playermodel.moc"
