#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Result
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Result runCli(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUMO_CLI_PATH), arguments);
    if (!process.waitForFinished(120000))
        qFatal("lumo-cli did not finish");
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

QJsonObject classify(const QString &text)
{
    const Result result = runCli({QStringLiteral("classify"), text});
    if (result.exitCode != 0)
        qFatal("classify failed: %s", result.err.constData());
    return QJsonDocument::fromJson(result.out).object();
}

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

} // namespace

class TestLumoCli : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void classifyKeysInOrder();
    void classifyYouTube();
    void classifyPlaylist();
    void classifyStream();
    void classifyInvalid();
    void parsePrintsEntriesInFileOrder();
    void parseResolvesAgainstTheFileByDefault();
    void parseCount();
    void parseLatin1();
    void parseLargeLatin1ListReadAgainFromTheFile();
    void parseEmptyPlaylistFails();
    void parseMissingFileFails();
    void usageErrors();
    void pagePrintsTheWebPlayerPage();
    void pageRejectsOtherAddressesAndInsecureOrigins();
};

void TestLumoCli::classifyKeysInOrder()
{
    const Result result = runCli({QStringLiteral("classify"), QStringLiteral("http://h/a.ts")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out,
             QByteArray("{\"input\":\"http://h/a.ts\",\"normalized\":\"http://h/a.ts\","
                        "\"kind\":\"stream\",\"videoID\":null,\"playlistID\":null,\"id\":null,"
                        "\"isLiveStream\":false,\"error\":null}\n"));
}

void TestLumoCli::classifyYouTube()
{
    const QJsonObject object = classify(u" <https://www.YouTube.com/watch?v=abc&list=PL1> "_qs);
    QCOMPARE(object[u"kind"_qs].toString(), u"youtube"_qs);
    QCOMPARE(object[u"normalized"_qs].toString(),
             u"https://www.YouTube.com/watch?v=abc&list=PL1"_qs);
    QCOMPARE(object[u"videoID"_qs].toString(), u"abc"_qs);
    QCOMPARE(object[u"playlistID"_qs].toString(), u"PL1"_qs);
    QCOMPARE(object[u"id"_qs].toString(), u"abc|PL1"_qs);
    QVERIFY(object[u"isLiveStream"_qs].isNull());
    QVERIFY(object[u"error"_qs].isNull());

    const QJsonObject listOnly = classify(u"https://www.youtube.com/watch?list=PLx"_qs);
    QVERIFY(listOnly[u"videoID"_qs].isNull());
    QCOMPARE(listOnly[u"id"_qs].toString(), u"|PLx"_qs);
}

void TestLumoCli::classifyPlaylist()
{
    const QJsonObject object = classify(u"http://h/get.php?username=a&password=b&type=m3u_plus"_qs);
    QCOMPARE(object[u"kind"_qs].toString(), u"playlist"_qs);
    QVERIFY(object[u"videoID"_qs].isNull());
    QVERIFY(object[u"error"_qs].isNull());
}

void TestLumoCli::classifyStream()
{
    const QJsonObject object = classify(u"[News](http://a/b.m3u8)"_qs);
    QCOMPARE(object[u"kind"_qs].toString(), u"stream"_qs);
    QCOMPARE(object[u"normalized"_qs].toString(), u"http://a/b.m3u8"_qs);
    QCOMPARE(object[u"isLiveStream"_qs].toBool(), true);
}

void TestLumoCli::classifyInvalid()
{
    for (const QString &text : {u"ftp://h/x"_qs, u"example.com"_qs, u""_qs}) {
        const QJsonObject object = classify(text);
        QCOMPARE(object[u"kind"_qs].toString(), u"invalid"_qs);
        QCOMPARE(object[u"error"_qs].toString(), u"Enter a valid HTTP or HTTPS address."_qs);
        QCOMPARE(object[u"input"_qs].toString(), text);
    }
}

void TestLumoCli::parsePrintsEntriesInFileOrder()
{
    QTemporaryDir dir;
    const QString path = writeFile(
        dir, u"list.m3u"_qs,
        "#EXTM3U\r\n#EXTINF:-1 tvg-id=\"a.us\" tvg-logo=\"http://h/a.png\" group-title=\"News\","
        "Alpha\r\nch1/index.m3u8\r\nhttp://h/live/news%20one.ts\r\n");
    const Result result
        = runCli({u"parse-m3u"_qs, path, u"--base"_qs, u"http://lists.example/tv/list.m3u"_qs});
    QCOMPARE(result.exitCode, 0);
    const QJsonArray entries = QJsonDocument::fromJson(result.out).array();
    QCOMPARE(entries.size(), 2);
    const QJsonObject first = entries[0].toObject();
    QCOMPARE(first[u"name"_qs].toString(), u"Alpha"_qs);
    QCOMPARE(first[u"url"_qs].toString(), u"http://lists.example/tv/ch1/index.m3u8"_qs);
    QCOMPARE(first[u"logoURL"_qs].toString(), u"http://h/a.png"_qs);
    QCOMPARE(first[u"groupTitle"_qs].toString(), u"News"_qs);
    QCOMPARE(first[u"countryCode"_qs].toString(), u"US"_qs);
    QVERIFY(!first.contains(u"id"_qs));
    const QJsonObject second = entries[1].toObject();
    QCOMPARE(second[u"name"_qs].toString(), u"news one"_qs);
    QVERIFY(second[u"logoURL"_qs].isNull());
    QVERIFY(second[u"groupTitle"_qs].isNull());
    QVERIFY(second[u"countryCode"_qs].isNull());
    QVERIFY(result.out.startsWith("[\n{\"name\":"));
}

void TestLumoCli::parseResolvesAgainstTheFileByDefault()
{
    QTemporaryDir dir;
    const QString path = writeFile(dir, u"list.m3u"_qs, "#EXTINF:-1,Local\nclips/a.mp4\n");
    const Result result = runCli({u"parse-m3u"_qs, path});
    QCOMPARE(result.exitCode, 0);
    const QJsonObject entry = QJsonDocument::fromJson(result.out).array()[0].toObject();
    QCOMPARE(entry[u"url"_qs].toString(),
             QUrl::fromLocalFile(dir.filePath(u"clips/a.mp4"_qs)).toString());
}

void TestLumoCli::parseCount()
{
    QTemporaryDir dir;
    QByteArray bytes = "#EXTM3U\n";
    for (int i = 0; i < 250; ++i)
        bytes += "#EXTINF:-1,C\nhttp://h/" + QByteArray::number(i) + ".ts\n";
    const Result result
        = runCli({u"parse-m3u"_qs, writeFile(dir, u"l.m3u"_qs, bytes), u"--count"_qs});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray("250\n"));
}

void TestLumoCli::parseLatin1()
{
    QTemporaryDir dir;
    const QString path
        = writeFile(dir, u"l.m3u"_qs, "#EXTINF:-1,Caf\xE9 T\xE9l\xE9\nhttp://h/a.ts\n");
    const Result result = runCli({u"parse-m3u"_qs, path});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QJsonDocument::fromJson(result.out).array()[0].toObject()[u"name"_qs].toString(),
             u"Café Télé"_qs);
}

void TestLumoCli::parseLargeLatin1ListReadAgainFromTheFile()
{
    // The parts read as UTF-8 are let go of as they are read; one Latin-1 byte at the end has
    // the whole list read again, which must still see the file's bytes.
    QTemporaryDir dir;
    QByteArray bytes = "#EXTM3U\n";
    int count = 0;
    while (bytes.size() < 3 * 1024 * 1024) {
        bytes += "#EXTINF:-1 group-title=\"News\",Channel " + QByteArray::number(count)
            + "\nhttp://h/live/" + QByteArray::number(count) + ".ts\n";
        ++count;
    }
    bytes += "#EXTINF:-1,Caf\xE9\nhttp://h/last.ts\n";
    const Result result = runCli({u"parse-m3u"_qs, writeFile(dir, u"l.m3u"_qs, bytes)});
    QCOMPARE(result.exitCode, 0);
    const QJsonArray entries = QJsonDocument::fromJson(result.out).array();
    QCOMPARE(entries.size(), count + 1);
    QCOMPARE(entries[0].toObject()[u"name"_qs].toString(), u"Channel 0"_qs);
    QCOMPARE(entries[count / 2].toObject()[u"url"_qs].toString(),
             u"http://h/live/%1.ts"_qs.arg(count / 2));
    QCOMPARE(entries[count].toObject()[u"name"_qs].toString(), u"Café"_qs);
}

void TestLumoCli::parseEmptyPlaylistFails()
{
    QTemporaryDir dir;
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("#EXTM3U\n"), QByteArray("\n\n\r\n")}) {
        const Result result = runCli({u"parse-m3u"_qs, writeFile(dir, u"e.m3u"_qs, bytes)});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(result.err, QByteArray("No playable address was found in the playlist.\n"));
    }
}

void TestLumoCli::parseMissingFileFails()
{
    const Result result = runCli({u"parse-m3u"_qs, u"/nonexistent/list.m3u"_qs});
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.err.contains("/nonexistent/list.m3u"));
}

void TestLumoCli::usageErrors()
{
    QCOMPARE(runCli({}).exitCode, 2);
    QCOMPARE(runCli({u"frobnicate"_qs}).exitCode, 2);
    QCOMPARE(runCli({u"classify"_qs}).exitCode, 2);
    QCOMPARE(runCli({u"parse-m3u"_qs}).exitCode, 2);
    QTemporaryDir dir;
    const QString path = writeFile(dir, u"l.m3u"_qs, "http://h/a.ts\n");
    QCOMPARE(runCli({u"parse-m3u"_qs, path, u"--base"_qs}).exitCode, 2);
    QCOMPARE(runCli({u"parse-m3u"_qs, path, u"--base"_qs, u"relative/x"_qs}).exitCode, 2);
}

void TestLumoCli::pagePrintsTheWebPlayerPage()
{
    const Result result = runCli({u"page"_qs, u"https://www.youtube.com/watch?v=dQw4w9WgXcQ"_qs});
    QCOMPARE(result.exitCode, 0);
    QFile expected(QStringLiteral(LUMO_SOURCE_DIR "/tests/webplayer/fixtures/video-page.html"));
    QVERIFY(expected.open(QIODevice::ReadOnly));
    QCOMPARE(result.out, expected.readAll());

    const Result other = runCli({u"page"_qs, u"https://youtu.be/abc?list=PLx"_qs, u"--origin"_qs,
                                 u"https://player.example.net/"_qs});
    QCOMPARE(other.exitCode, 0);
    QVERIFY(other.out.contains("origin: \"https:\\/\\/player.example.net\"\n"));
    QVERIFY(other.out.contains("var videoID = \"abc\";\n      var playlistID = \"PLx\";\n"));
}

void TestLumoCli::pageRejectsOtherAddressesAndInsecureOrigins()
{
    const Result stream = runCli({u"page"_qs, u"http://h/live.m3u8"_qs});
    QCOMPARE(stream.exitCode, 1);
    QVERIFY(stream.err.contains("not a video-service address"));
    QVERIFY(stream.out.isEmpty());
    const Result insecure
        = runCli({u"page"_qs, u"https://youtu.be/abc"_qs, u"--origin"_qs, u"http://h"_qs});
    QCOMPARE(insecure.exitCode, 2);
    QVERIFY(insecure.err.contains("https origin"));
}

QTEST_GUILESS_MAIN(TestLumoCli)
#include "tst_lumocli.moc"
