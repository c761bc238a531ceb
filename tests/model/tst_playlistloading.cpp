// Playlist loads that meet each other: a download superseded by another choice, an import made
// while a download is pending, slow servers, and files that never finish reading. Playlists
// come from a real local server and real files; the player is scripted, as nothing plays here.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

QByteArray playlistText(const QStringList &names)
{
    QByteArray text = "#EXTM3U\n";
    for (const QString &name : names)
        text += "#EXTINF:-1," + name.toUtf8() + "\nhttp://127.0.0.1:9/" + name.toUtf8() + ".ts\n";
    return text;
}

QStringList names(const QList<PlaylistEntry> &entries)
{
    QStringList result;
    for (const PlaylistEntry &entry : entries)
        result.append(entry.name());
    return result;
}

} // namespace

class TestPlaylistLoading : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_files;
    LocalHttpServer m_server;
    std::unique_ptr<PlayerModel> m_model;
    QString m_chosenFile;

    void startHeldDownload()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/held.m3u")).toString(), std::nullopt);
        QVERIFY(m_model->isLoading());
        QTRY_COMPARE_WITH_TIMEOUT(m_server.heldCount(), 1, 5000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_files.isValid());
        m_server.route(QStringLiteral("/held.m3u"),
                       HttpResponse::text(playlistText({"Remote A", "Remote B"})));
        m_server.route(QStringLiteral("/list.m3u"), HttpResponse::text(playlistText({"Listed"})));
        // About 3 s of body, a byte every 10 ms: slow, but never idle.
        HttpResponse drip = HttpResponse::text(playlistText({"Slow but steady"}).repeated(6));
        drip.dripIntervalMs = 10;
        m_server.route(QStringLiteral("/drip.m3u"), drip);
        QVERIFY(m_server.listen());

        QFile local(m_files.filePath(QStringLiteral("local.m3u8")));
        QVERIFY(local.open(QIODevice::WriteOnly));
        local.write(playlistText({"Local One", "Local Two", "Local Three"}));
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_model->setFileChooser([this](const OpenPanelRequest &) { return m_chosenFile; });
        m_server.hold(QRegularExpression(QStringLiteral("^/held")));
    }

    void cleanup()
    {
        m_model.reset();
        m_server.hold(QRegularExpression());
    }

    void anotherChoiceEndsAPendingDownload_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isError");
        QTest::newRow("invalid address") << "ftp://example.com/list.m3u" << true;
        QTest::newRow("video service") << "https://youtu.be/dQw4w9WgXcQ" << false;
        QTest::newRow("stream") << "http://127.0.0.1:9/live.ts" << false;
    }

    void anotherChoiceEndsAPendingDownload()
    {
        QFETCH(QString, address);
        QFETCH(bool, isError);
        startHeldDownload();
        m_model->openRemote(address, std::nullopt);
        QVERIFY(!m_model->isLoading());
        QCOMPARE(m_model->errorMessage().isNull(), !isError);
        // The download itself is abandoned: the server sees its client go.
        QTRY_COMPARE_WITH_TIMEOUT(m_server.heldCount(), 0, 5000);
        m_server.hold(QRegularExpression());
        QTest::qWait(300);
        QVERIFY(m_model->playlist().isEmpty());
        QVERIFY(!m_model->isLoading());
    }

    void aNewPlaylistAfterAnAbandonedOneLoads()
    {
        startHeldDownload();
        m_model->openRemote(QStringLiteral("not an address"), std::nullopt);
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QVERIFY(m_model->isLoading());
        QTRY_COMPARE_WITH_TIMEOUT(names(m_model->playlist()), QStringList {"Listed"}, 5000);
        QVERIFY(!m_model->isLoading());
        QVERIFY(m_model->errorMessage().isNull());
    }

    void aRealIndexLoadsWithWholeNames()
    {
        // A real public index of 7,521 channels, 164 of which name a user agent holding a comma.
        QFile index(QStringLiteral(LUMO_CORPUS_DIR
                                   "/m3u/orgTestCodacy11KRepos110MB_repo-9001-iptv__index.m3u"));
        QVERIFY(index.open(QIODevice::ReadOnly));
        m_server.route(QStringLiteral("/index.m3u"),
                       HttpResponse::text(index.readAll(), "audio/x-mpegurl"));
        m_model->openRemote(m_server.url(QStringLiteral("/index.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 7521, 10000);
        const QStringList all = names(m_model->playlist());
        QVERIFY(all.contains(QStringLiteral("21TV (480p)")));
        for (const QString &name : all)
            QVERIFY2(!name.contains(u"like Gecko"), qPrintable(name));
    }

    void anImportWinsOverAPendingDownload()
    {
        startHeldDownload();
        m_chosenFile = m_files.filePath(QStringLiteral("local.m3u8"));
        m_model->importLocalM3U(QStringLiteral("Mine"));
        const QStringList local {"Local One", "Local Two", "Local Three"};
        QTRY_COMPARE_WITH_TIMEOUT(names(m_model->playlist()), local, 5000);
        QVERIFY(!m_model->isLoading());
        QCOMPARE(m_model->title(), "Mine");
        // The download, answered now, changes nothing.
        m_server.hold(QRegularExpression());
        QTest::qWait(1000);
        QCOMPARE(names(m_model->playlist()), local);
        QCOMPARE(m_model->title(), "Mine");
    }

    void aSlowButLiveDownloadIsNeverCutShort()
    {
        PlaylistDownloadLimits limits;
        limits.idleTimeoutMs = 1000;
        m_model->setPlaylistDownloadLimits(limits);
        m_model->openRemote(m_server.url(QStringLiteral("/drip.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 6, 20000);
        QVERIFY(m_model->errorMessage().isNull());
    }

    void importingSomethingThatIsNotAFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message");
        QTest::newRow("named pipe")
            << "pipe.m3u"
            << "Could not import playlist: The file “pipe.m3u” couldn’t be opened because it "
               "isn’t a regular file.";
        QTest::newRow("folder") << "folder.m3u"
                                << "Could not import playlist: The file “folder.m3u” couldn’t be "
                                   "opened because it isn’t a regular file.";
        QTest::newRow("missing") << "missing.m3u"
                                 << "Could not import playlist: The file “missing.m3u” couldn’t "
                                    "be opened because there is no such file.";
    }

    void importingSomethingThatIsNotAFile()
    {
        QFETCH(QString, name);
        QFETCH(QString, message);
        const QString path = m_files.filePath(name);
        if (name == QLatin1String("pipe.m3u") && !QFile::exists(path))
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        if (name == QLatin1String("folder.m3u"))
            QDir().mkpath(path);
        // Should the read wait for a writer, this writer lets it end after a while, so that
        // the test fails instead of hanging.
        std::thread writer([path] {
            std::this_thread::sleep_for(std::chrono::seconds(6));
            const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK);
            if (fd >= 0)
                ::close(fd);
        });
        m_chosenFile = path;
        m_model->importLocalM3U(std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->errorMessage(), message, 3000);
        // The loader is free for the next load.
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(names(m_model->playlist()), QStringList {"Listed"}, 3000);
        writer.join();
    }
};

QTEST_GUILESS_MAIN(TestPlaylistLoading)
#include "tst_playlistloading.moc"
