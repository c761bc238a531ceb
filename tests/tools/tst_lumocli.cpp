#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

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
    void startsWithoutTheFaceDetectionLibraries();
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
    const QJsonObject object = classify(u" <https://www.YouTube.com/watch?v=abc&list=PL1> "_s);
    QCOMPARE(object[u"kind"_s].toString(), u"youtube"_s);
    QCOMPARE(object[u"normalized"_s].toString(), u"https://www.YouTube.com/watch?v=abc&list=PL1"_s);
    QCOMPARE(object[u"videoID"_s].toString(), u"abc"_s);
    QCOMPARE(object[u"playlistID"_s].toString(), u"PL1"_s);
    QCOMPARE(object[u"id"_s].toString(), u"abc|PL1"_s);
    QVERIFY(object[u"isLiveStream"_s].isNull());
    QVERIFY(object[u"error"_s].isNull());

    const QJsonObject listOnly = classify(u"https://www.youtube.com/watch?list=PLx"_s);
    QVERIFY(listOnly[u"videoID"_s].isNull());
    QCOMPARE(listOnly[u"id"_s].toString(), u"|PLx"_s);
}

void TestLumoCli::classifyPlaylist()
{
    const QJsonObject object = classify(u"http://h/get.php?username=a&password=b&type=m3u_plus"_s);
    QCOMPARE(object[u"kind"_s].toString(), u"playlist"_s);
    QVERIFY(object[u"videoID"_s].isNull());
    QVERIFY(object[u"error"_s].isNull());
}

void TestLumoCli::classifyStream()
{
    const QJsonObject object = classify(u"[News](http://a/b.m3u8)"_s);
    QCOMPARE(object[u"kind"_s].toString(), u"stream"_s);
    QCOMPARE(object[u"normalized"_s].toString(), u"http://a/b.m3u8"_s);
    QCOMPARE(object[u"isLiveStream"_s].toBool(), true);
}

void TestLumoCli::classifyInvalid()
{
    for (const QString &text : {u"ftp://h/x"_s, u"example.com"_s, u""_s}) {
        const QJsonObject object = classify(text);
        QCOMPARE(object[u"kind"_s].toString(), u"invalid"_s);
        QCOMPARE(object[u"error"_s].toString(), u"Enter a valid HTTP or HTTPS address."_s);
        QCOMPARE(object[u"input"_s].toString(), text);
    }
}

void TestLumoCli::parsePrintsEntriesInFileOrder()
{
    QTemporaryDir dir;
    const QString path = writeFile(
        dir, u"list.m3u"_s,
        "#EXTM3U\r\n#EXTINF:-1 tvg-id=\"a.us\" tvg-logo=\"http://h/a.png\" group-title=\"News\","
        "Alpha\r\nch1/index.m3u8\r\nhttp://h/live/news%20one.ts\r\n");
    const Result result
        = runCli({u"parse-m3u"_s, path, u"--base"_s, u"http://lists.example/tv/list.m3u"_s});
    QCOMPARE(result.exitCode, 0);
    const QJsonArray entries = QJsonDocument::fromJson(result.out).array();
    QCOMPARE(entries.size(), 2);
    const QJsonObject first = entries[0].toObject();
    QCOMPARE(first[u"name"_s].toString(), u"Alpha"_s);
    QCOMPARE(first[u"url"_s].toString(), u"http://lists.example/tv/ch1/index.m3u8"_s);
    QCOMPARE(first[u"logoURL"_s].toString(), u"http://h/a.png"_s);
    QCOMPARE(first[u"groupTitle"_s].toString(), u"News"_s);
    QCOMPARE(first[u"countryCode"_s].toString(), u"US"_s);
    QVERIFY(!first.contains(u"id"_s));
    const QJsonObject second = entries[1].toObject();
    QCOMPARE(second[u"name"_s].toString(), u"news one"_s);
    QVERIFY(second[u"logoURL"_s].isNull());
    QVERIFY(second[u"groupTitle"_s].isNull());
    QVERIFY(second[u"countryCode"_s].isNull());
    QVERIFY(result.out.startsWith("[\n{\"name\":"));
}

void TestLumoCli::parseResolvesAgainstTheFileByDefault()
{
    QTemporaryDir dir;
    const QString path = writeFile(dir, u"list.m3u"_s, "#EXTINF:-1,Local\nclips/a.mp4\n");
    const Result result = runCli({u"parse-m3u"_s, path});
    QCOMPARE(result.exitCode, 0);
    const QJsonObject entry = QJsonDocument::fromJson(result.out).array()[0].toObject();
    QCOMPARE(entry[u"url"_s].toString(),
             QUrl::fromLocalFile(dir.filePath(u"clips/a.mp4"_s)).toString());
}

void TestLumoCli::parseCount()
{
    QTemporaryDir dir;
    QByteArray bytes = "#EXTM3U\n";
    for (int i = 0; i < 250; ++i)
        bytes += "#EXTINF:-1,C\nhttp://h/" + QByteArray::number(i) + ".ts\n";
    const Result result = runCli({u"parse-m3u"_s, writeFile(dir, u"l.m3u"_s, bytes), u"--count"_s});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray("250\n"));
}

// Counting a list is over in a tenth of a second; loading OpenCV and Qt's graphics alone would
// take a sixth of that, so the commands that need neither do not link them.
void TestLumoCli::startsWithoutTheFaceDetectionLibraries()
{
    QProcess ldd;
    ldd.start(QStringLiteral("ldd"), {QStringLiteral(LUMO_CLI_PATH)});
    QVERIFY(ldd.waitForFinished(30000));
    QCOMPARE(ldd.exitCode(), 0);
    const QByteArray libraries = ldd.readAllStandardOutput();
    QVERIFY2(libraries.contains("libQt6Core"), libraries.constData());
    QVERIFY2(!libraries.contains("libopencv"), libraries.constData());
    QVERIFY2(!libraries.contains("libQt6Gui"), libraries.constData());
}

void TestLumoCli::parseLatin1()
{
    QTemporaryDir dir;
    const QString path
        = writeFile(dir, u"l.m3u"_s, "#EXTINF:-1,Caf\xE9 T\xE9l\xE9\nhttp://h/a.ts\n");
    const Result result = runCli({u"parse-m3u"_s, path});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QJsonDocument::fromJson(result.out).array()[0].toObject()[u"name"_s].toString(),
             u"Café Télé"_s);
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
    const Result result = runCli({u"parse-m3u"_s, writeFile(dir, u"l.m3u"_s, bytes)});
    QCOMPARE(result.exitCode, 0);
    const QJsonArray entries = QJsonDocument::fromJson(result.out).array();
    QCOMPARE(entries.size(), count + 1);
    QCOMPARE(entries[0].toObject()[u"name"_s].toString(), u"Channel 0"_s);
    QCOMPARE(entries[count / 2].toObject()[u"url"_s].toString(),
             u"http://h/live/%1.ts"_s.arg(count / 2));
    QCOMPARE(entries[count].toObject()[u"name"_s].toString(), u"Café"_s);
}

void TestLumoCli::parseEmptyPlaylistFails()
{
    QTemporaryDir dir;
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("#EXTM3U\n"), QByteArray("\n\n\r\n")}) {
        const Result result = runCli({u"parse-m3u"_s, writeFile(dir, u"e.m3u"_s, bytes)});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(result.err, QByteArray("No playable address was found in the playlist.\n"));
    }
}

void TestLumoCli::parseMissingFileFails()
{
    const Result result = runCli({u"parse-m3u"_s, u"/nonexistent/list.m3u"_s});
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.err.contains("/nonexistent/list.m3u"));
}

void TestLumoCli::usageErrors()
{
    QCOMPARE(runCli({}).exitCode, 2);
    QCOMPARE(runCli({u"frobnicate"_s}).exitCode, 2);
    QCOMPARE(runCli({u"classify"_s}).exitCode, 2);
    QCOMPARE(runCli({u"parse-m3u"_s}).exitCode, 2);
    QTemporaryDir dir;
    const QString path = writeFile(dir, u"l.m3u"_s, "http://h/a.ts\n");
    QCOMPARE(runCli({u"parse-m3u"_s, path, u"--base"_s}).exitCode, 2);
    QCOMPARE(runCli({u"parse-m3u"_s, path, u"--base"_s, u"relative/x"_s}).exitCode, 2);
}

void TestLumoCli::pagePrintsTheWebPlayerPage()
{
    const Result result = runCli({u"page"_s, u"https://www.youtube.com/watch?v=dQw4w9WgXcQ"_s});
    QCOMPARE(result.exitCode, 0);
    QFile expected(QStringLiteral(LUMO_SOURCE_DIR "/tests/webplayer/fixtures/video-page.html"));
    QVERIFY(expected.open(QIODevice::ReadOnly));
    QCOMPARE(result.out, expected.readAll());

    const Result other = runCli({u"page"_s, u"https://youtu.be/abc?list=PLx"_s, u"--origin"_s,
                                 u"https://player.example.net/"_s});
    QCOMPARE(other.exitCode, 0);
    QVERIFY(other.out.contains("origin: \"https:\\/\\/player.example.net\"\n"));
    QVERIFY(other.out.contains("var videoID = \"abc\";\n      var playlistID = \"PLx\";\n"));
}

void TestLumoCli::pageRejectsOtherAddressesAndInsecureOrigins()
{
    const Result stream = runCli({u"page"_s, u"http://h/live.m3u8"_s});
    QCOMPARE(stream.exitCode, 1);
    QVERIFY(stream.err.contains("not a video-service address"));
    QVERIFY(stream.out.isEmpty());
    const Result insecure
        = runCli({u"page"_s, u"https://youtu.be/abc"_s, u"--origin"_s, u"http://h"_s});
    QCOMPARE(insecure.exitCode, 2);
    QVERIFY(insecure.err.contains("https origin"));
}

QTEST_GUILESS_MAIN(TestLumoCli)
#include "tst_lumocli.moc"
