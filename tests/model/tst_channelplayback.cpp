// Playing the channels of a playlist with real libmpv and a real local server: the request
// headers a playlist names reach the stream's server, and a network item never gets local
// files opened on its behalf.
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "model/playlistexpansion.h"
#include "testmedia.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

class TestChannelPlayback : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    LocalHttpServer m_server;
    std::unique_ptr<PlayerModel> m_model;
    QString m_chosenFile;
    QTcpServer m_trap;
    int m_trapConnections = 0;

    const PlaylistEntry *channel(const QString &name) const
    {
        for (const PlaylistEntry &entry : m_model->playlist())
            if (entry.name() == name)
                return &entry;
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        const QString clip = m_media.filePath(QStringLiteral("clip.mp4"));
        QVERIFY(TestMedia::makeClip(clip, 2));
        QVERIFY(TestMedia::makeSegments(m_media.filePath(QStringLiteral("segments")), 3));
        QFile file(clip);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray clipBytes = file.readAll();
        QVERIFY(m_server.listen());

        // Answers only the player that names itself and the page it came from.
        m_server.route(QStringLiteral("/guarded/clip.mp4"), [clipBytes](const HttpRequest &r) {
            if (r.headers.value("user-agent") != "LumoTest/1.0 (like VLC)"
                || r.headers.value("referer") != "https://site.example/watch?id=1")
                return HttpResponse::text("forbidden\n", "text/plain", 403);
            return HttpResponse::text(clipBytes, "video/mp4");
        });
        const QByteArray guarded = m_server.url(QStringLiteral("/guarded/clip.mp4")).toEncoded();
        m_server.route(QStringLiteral("/open/clip.mp4"),
                       HttpResponse::text(clipBytes, "video/mp4"));
        const QByteArray open = m_server.url(QStringLiteral("/open/clip.mp4")).toEncoded();
        // An index of lists, as public IPTV indexes are: a country's list is a channel of it.
        m_server.route(QStringLiteral("/index.m3u"),
                       HttpResponse::text("#EXTM3U\n#EXTINF:-1,Argentina\n"
                                          + m_server.url(QStringLiteral("/ar.m3u")).toEncoded()
                                          + "\n#EXTINF:-1,Bare radio\n"
                                          + m_server.url(QStringLiteral("/bare.m3u")).toEncoded()
                                          + "\n"));
        m_server.route(QStringLiteral("/ar.m3u"),
                       HttpResponse::text("#EXTM3U\n#EXTINF:-1 group-title=\"News\",Buenos Aires "
                                          "TV\n"
                                              + open + "\n#EXTINF:-1,Rosario TV\n" + open + "\n",
                                          "audio/x-mpegurl"));
        // A radio link's list of bare addresses plays as before.
        m_server.route(QStringLiteral("/bare.m3u"),
                       HttpResponse::text(open + "\n", "audio/x-mpegurl"));
        m_server.route(QStringLiteral("/channels.m3u"),
                       HttpResponse::text("#EXTM3U\r\n#EXTINF:-1,With headers\r\n"
                                          "#EXTVLCOPT:http-user-agent=LumoTest/1.0 (like VLC)\r\n"
                                          "#EXTVLCOPT:http-referrer=https://site.example/watch?"
                                          "id=1\r\n"
                                          + guarded
                                          + "\r\n#EXTINF:-1 http-user-agent=\"LumoTest/1.0 (like "
                                            "VLC)\" http-referrer=\"https://site.example/watch?"
                                            "id=1\",As attributes\r\n"
                                          + guarded + "\r\n#EXTINF:-1,Without\r\n" + guarded
                                          + "\r\n#EXTINF:-1,Local file\r\nfile://"
                                          + QUrl::fromLocalFile(clip).path().toUtf8()
                                          + "\r\n#EXTINF:-1 http-user-agent=\"LumoTest/1.0 (like "
                                            "VLC)\" http-referrer=\"https://site.example/watch?"
                                            "id=1\",Radio\r\n"
                                          + m_server.url(QStringLiteral("/radio.pls")).toEncoded()
                                          + "\r\n#EXTINF:-1,Dead radio\r\n"
                                          + m_server.url(QStringLiteral("/dead.pls")).toEncoded()
                                          + "\r\n"));
        // Radio links: playlists that mpv reads itself. The first entries of the live one lead
        // to a port that is not the player's business and to a file that is gone.
        QVERIFY(m_trap.listen(QHostAddress::LocalHost));
        connect(&m_trap, &QTcpServer::newConnection, this, [this] {
            ++m_trapConnections;
            delete m_trap.nextPendingConnection();
        });
        const QByteArray trap = "tcp://127.0.0.1:" + QByteArray::number(m_trap.serverPort()) + "/";
        const QByteArray gone = m_server.url(QStringLiteral("/gone.mp4")).toEncoded();
        m_server.route(QStringLiteral("/radio.pls"),
                       HttpResponse::text("[playlist]\nNumberOfEntries=3\nFile1=" + trap
                                              + "\nFile2=" + gone + "\nFile3=" + guarded
                                              + "\nVersion=2\n",
                                          "audio/x-scpls"));
        m_server.route(
            QStringLiteral("/dead.pls"),
            HttpResponse::text("[playlist]\nNumberOfEntries=2\nFile1=" + gone + "\nFile2="
                                   + m_server.url(QStringLiteral("/gone-too.mp4")).toEncoded()
                                   + "\nVersion=2\n",
                               "audio/x-scpls"));
        // An HLS index from the network whose segments are files on this machine.
        QByteArray index = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n"
                           "#EXT-X-MEDIA-SEQUENCE:0\n";
        for (int i = 0; i < 3; ++i)
            index += "#EXTINF:1.0,\n"
                + QUrl::fromLocalFile(m_media.filePath(QStringLiteral("segments/seg%1.ts").arg(i)))
                      .toEncoded()
                + "\n";
        index += "#EXT-X-ENDLIST\n";
        m_server.route(QStringLiteral("/trap/index.m3u8"),
                       HttpResponse::text(index, "application/vnd.apple.mpegurl"));

        QFile local(m_media.filePath(QStringLiteral("mine.m3u")));
        QVERIFY(local.open(QIODevice::WriteOnly));
        local.write("#EXTM3U\n#EXTINF:-1,Next to the list\nclip.mp4\n");
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_model->setFileChooser([this](const OpenPanelRequest &) { return m_chosenFile; });
        m_model->openRemote(m_server.url(QStringLiteral("/channels.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 6, 10000);
    }

    void cleanup() { m_model.reset(); }

    void aChannelPlaysWithItsHeaders_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("#EXTVLCOPT lines") << "With headers";
        QTest::newRow("#EXTINF attributes") << "As attributes";
    }

    void aChannelPlaysWithItsHeaders()
    {
        QFETCH(QString, name);
        QVERIFY(channel(name));
        m_model->playChannel(*channel(name));
        QCOMPARE(m_model->title(), name);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 15000);
        QVERIFY(m_model->toastMessage().isNull());
    }

    void theSameStreamWithoutThemIsRefused()
    {
        QVERIFY(channel(QStringLiteral("Without")));
        m_model->playChannel(*channel(QStringLiteral("Without")));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), "Could not play Without.", 15000);
        // Headers belong to their channel only: the next plain stream goes without them.
        m_model->playChannel(*channel(QStringLiteral("With headers")));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 15000);
    }

    void aDownloadedListNeverPlaysALocalFile()
    {
        QVERIFY(channel(QStringLiteral("Local file")));
        m_model->playChannel(*channel(QStringLiteral("Local file")));
        QCOMPARE(m_model->errorMessage(), "Enter a valid HTTP or HTTPS address.");
        QVERIFY(!m_model->player().hasItem());
        QCOMPARE(m_model->title(), "IPTV Playlist");
    }

    void anImportedListPlaysTheFilesBesideIt()
    {
        m_chosenFile = m_media.filePath(QStringLiteral("mine.m3u"));
        m_model->importLocalM3U(std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 1, 5000);
        m_model->playChannel(m_model->playlist().constFirst());
        QVERIFY(m_model->errorMessage().isNull());
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 15000);
    }

    void aRadioLinkPlaysItsEntriesAsTheChannel()
    {
        // mpv reads the radio link's playlist; its entries are loaded as the channel is, with
        // its headers, and only where a channel may lead. A failing entry gives way to the next
        // without the item ending.
        QVERIFY(channel(QStringLiteral("Radio")));
        const int goneRequests = m_server.requestCount(QStringLiteral("/gone.mp4"));
        QSignalSpy items(&m_model->player(), &MediaPlayer::hasItemChanged);
        m_model->playChannel(*channel(QStringLiteral("Radio")));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 20000);
        QCOMPARE(m_model->title(), "Radio");
        QVERIFY(m_model->toastMessage().isNull());
        QVERIFY(m_model->player().hasItem());
        QVERIFY(m_model->isPlaying());
        for (const QList<QVariant> &change : items)
            QVERIFY2(change.constFirst().toBool(), "the item never ends on the way");
        QCOMPARE(m_trapConnections, 0);
        QCOMPARE(m_server.requestCount(QStringLiteral("/gone.mp4")), goneRequests + 1);
    }

    void aChannelThatIsAChannelListOpensAsTheList()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/index.m3u")).toString(), std::nullopt);
        QTRY_VERIFY_WITH_TIMEOUT(channel(QStringLiteral("Argentina")), 10000);
        QStringList notices;
        connect(m_model.get(), &PlayerModel::toastMessageChanged, this, [&] {
            if (!m_model->toastMessage().isNull())
                notices.append(m_model->toastMessage());
        });
        m_model->playChannel(*channel(QStringLiteral("Argentina")));
        QTRY_VERIFY_WITH_TIMEOUT(channel(QStringLiteral("Buenos Aires TV")), 20000);
        QCOMPARE(m_model->playlist().size(), 2);
        QVERIFY(m_model->canGoBack());
        QVERIFY2(notices.isEmpty(), qPrintable(notices.join(u'|')));
        QVERIFY(m_model->errorMessage().isNull());
        QVERIFY(!m_model->isPlaying());
        // Its channels play.
        m_model->playChannel(*channel(QStringLiteral("Rosario TV")));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 20000);
        QCOMPARE(m_model->title(), QStringLiteral("Rosario TV"));
        // Back to the index.
        m_model->goBack();
        QVERIFY(channel(QStringLiteral("Argentina")));
        QVERIFY(!m_model->canGoBack());
        // A list of bare addresses still plays its entry as the channel.
        m_model->playChannel(*channel(QStringLiteral("Bare radio")));
        QTRY_VERIFY_WITH_TIMEOUT(m_model->currentTime() > 0.2, 20000);
        QCOMPARE(m_model->title(), QStringLiteral("Bare radio"));
        QVERIFY(channel(QStringLiteral("Argentina")));
        QVERIFY2(notices.isEmpty(), qPrintable(notices.join(u'|')));
    }

    void aRadioLinkWithNothingPlayableEndsInOneNotice()
    {
        QVERIFY(channel(QStringLiteral("Dead radio")));
        const int first = m_server.requestCount(QStringLiteral("/gone.mp4"));
        const int second = m_server.requestCount(QStringLiteral("/gone-too.mp4"));
        QStringList notices;
        connect(m_model.get(), &PlayerModel::toastMessageChanged, this, [&] {
            if (!m_model->toastMessage().isNull())
                notices.append(m_model->toastMessage());
        });
        m_model->playChannel(*channel(QStringLiteral("Dead radio")));
        QTRY_VERIFY_WITH_TIMEOUT(!notices.isEmpty(), 20000);
        QTest::qWait(1000);
        QCOMPARE(notices, QStringList {QStringLiteral("Could not play Dead radio.")});
        QVERIFY(!m_model->player().hasItem());
        // Each entry was tried once, the last one too.
        QCOMPARE(m_server.requestCount(QStringLiteral("/gone.mp4")), first + 1);
        QCOMPARE(m_server.requestCount(QStringLiteral("/gone-too.mp4")), second + 1);
    }

    void listsThatNameEachOtherEndInOneNotice_data()
    {
        QTest::addColumn<QString>("first");
        QTest::newRow("itself") << QStringLiteral("/loop.pls");
        QTest::newRow("each other") << QStringLiteral("/ping.pls");
    }

    void listsThatNameEachOtherEndInOneNotice()
    {
        QFETCH(QString, first);
        const auto pls = [this](const QStringList &paths) {
            QByteArray text = "[playlist]\nNumberOfEntries=" + QByteArray::number(paths.size());
            for (qsizetype i = 0; i < paths.size(); ++i)
                text += "\nFile" + QByteArray::number(i + 1) + "="
                    + m_server.url(paths[i]).toEncoded();
            return HttpResponse::text(text + "\nVersion=2\n", "audio/x-scpls");
        };
        m_server.route(QStringLiteral("/loop.pls"), pls({"/loop.pls", "/loop.pls"}));
        m_server.route(QStringLiteral("/ping.pls"), pls({"/pong.pls"}));
        m_server.route(QStringLiteral("/pong.pls"), pls({"/ping.pls"}));
        const auto requests = [this] {
            return m_server.requestCount(QStringLiteral("/loop.pls"))
                + m_server.requestCount(QStringLiteral("/ping.pls"))
                + m_server.requestCount(QStringLiteral("/pong.pls"));
        };
        const int before = requests();
        m_model->openRemote(m_server.url(first).toString(), QStringLiteral("Loop radio"));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), "Could not play Loop radio.", 10000);
        // Older mpv releases follow the loop up to the player's bound; newer ones refuse at once
        // the list that leads back. Either way the reason is what the lists named.
        const QString detail = m_model->toastDetail();
        QVERIFY2(detail.startsWith("None of its ")
                     || detail == "Its one entry could not be played.",
                 qPrintable(detail));
        QVERIFY(!m_model->player().hasItem());
        QTest::qWait(1000);
        QVERIFY2(requests() - before <= PlaylistExpansion::maxRequests,
                 qPrintable(QString::number(requests() - before)));
    }

    void onlyAListOfThisComputerMayNameItsFiles()
    {
        // A list of this computer names one from the network, which names a file here.
        const QString clip = m_media.filePath(QStringLiteral("clip.mp4"));
        m_server.route(QStringLiteral("/names-file.pls"),
                       HttpResponse::text("[playlist]\nNumberOfEntries=1\nFile1=" + clip.toUtf8()
                                              + "\nVersion=2\n",
                                          "audio/x-scpls"));
        const QString local = m_media.filePath(QStringLiteral("local.pls"));
        QFile file(local);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[playlist]\nNumberOfEntries=1\nFile1="
                   + m_server.url(QStringLiteral("/names-file.pls")).toEncoded() + "\nVersion=2\n");
        file.close();
        QSignalSpy failed(&m_model->player(), &MediaPlayer::playbackFailed);
        m_model->player().replaceCurrentItem(QUrl::fromLocalFile(local), {});
        QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, 10000);
        QVERIFY(!(m_model->currentTime() > 0));
        QCOMPARE(m_server.requestCount(QStringLiteral("/names-file.pls")), 1);
    }

    void aNetworkStreamNeverOpensLocalFiles()
    {
        // Played as typed: mpv loads the index, and FFmpeg may not open its file: segments.
        m_model->openRemote(m_server.url(QStringLiteral("/trap/index.m3u8")).toString(),
                            std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), "Could not play index.m3u8.", 20000);
        QVERIFY(!(m_model->currentTime() > 0));
    }
};

QTEST_GUILESS_MAIN(TestChannelPlayback)
#include "tst_channelplayback.moc"
