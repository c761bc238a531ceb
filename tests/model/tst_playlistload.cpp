#include "model/playlistload.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestPlaylistLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void latin1AccentsSurvive()
    {
        const QByteArray latin1 = "#EXTM3U\n#EXTINF:-1,T\xe9l\xe9 Qu\xe9"
                                  "bec\nhttp://example.com/a.m3u8\n";
        const PlaylistLoadResult result
            = loadPlaylist(latin1, QUrl(QStringLiteral("http://example.com/list.m3u")));
        QVERIFY(result.error.isNull());
        QCOMPARE(result.entries.size(), 1);
        QCOMPARE(result.entries[0].name(), QStringLiteral("Télé Québec"));
    }

    void noEntryIsAnError()
    {
        const PlaylistLoadResult result
            = loadPlaylist("#EXTM3U\n# nothing here\n", QUrl(QStringLiteral("http://e.com/l.m3u")));
        QVERIFY(result.entries.isEmpty());
        QCOMPARE(result.error, "No playable address was found in the playlist.");
    }

    void relativeAddressesResolveAgainstTheFile()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("local.m3u"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#EXTM3U\n#EXTINF:-1,One\nchannels/one.m3u8\n");
        file.close();
        const PlaylistLoadResult result = loadPlaylistFile(path, maxPlaylistBytes);
        QVERIFY(result.error.isNull());
        QCOMPARE(result.entries.size(), 1);
        QCOMPARE(result.entries[0].url(),
                 QUrl::fromLocalFile(folder.filePath(QStringLiteral("channels/one.m3u8"))));
    }

    void missingFile()
    {
        const PlaylistLoadResult result
            = loadPlaylistFile(QStringLiteral("/nonexistent/lists/tv.m3u"), maxPlaylistBytes);
        QCOMPARE(result.error,
                 "The file “tv.m3u” couldn’t be opened because there is no such file.");
    }

    void aFolderIsNotAPlaylist()
    {
        QTemporaryDir folder;
        const PlaylistLoadResult result = loadPlaylistFile(folder.path(), maxPlaylistBytes);
        QVERIFY(!result.error.isNull());
        QVERIFY(result.entries.isEmpty());
    }

    void tooLargeFilesAreRefusedBeforeReading()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("big.m3u"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(3 * 1024 * 1024)); // sparse: no real bytes written
        file.close();
        const PlaylistLoadResult result = loadPlaylistFile(path, 2 * 1024 * 1024);
        QCOMPARE(result.error, "The playlist is larger than 2 MB.");
        QCOMPARE(playlistTooLargeDescription(maxPlaylistBytes),
                 "The playlist is larger than 128 MB.");
    }
};

QTEST_GUILESS_MAIN(TestPlaylistLoad)
#include "tst_playlistload.moc"
