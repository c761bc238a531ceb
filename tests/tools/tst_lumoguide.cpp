// lumo-cli guide: now and next for every entry of a playlist as JSON Lines, from the guides its
// header names (files beside it or addresses on a real local server) or those given instead.
#include "hostileguides.h"
#include "httpserver/localhttpserver.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

struct Result
{
    int exitCode = -1;
    QList<QByteArray> lines;
    QByteArray err;
};

// Runs the command while this thread's event loop keeps serving.
Result runGuide(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUMO_CLI_PATH), QStringList {u"guide"_s} + arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 120000))
        qFatal("lumo-cli guide did not finish");
    QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, lines,
            process.readAllStandardError()};
}

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

const QByteArray news = R"(<?xml version="1.0" encoding="ISO-8859-1"?>
<tv>
 <channel id="News.uk"><display-name>BBC News</display-name></channel>
 <channel id="film"><display-name>Cin)"
                        "\xE9"
                        R"( Plus</display-name></channel>
 <programme channel="News.uk" start="20261125200000 +0000" stop="20261125210000 +0000"><title>News at Eight &amp; More</title></programme>
 <programme channel="News.uk" start="202611252100 +0000" stop="202611252200 +0000"><title><![CDATA[Nine <Live>]]></title><title>Second title</title></programme>
 <programme channel="film" start="20261125193000" stop="20261125220000"><title>Caf)"
                        "\xE9"
                        R"(</title></programme>
 <programme channel="unknown" start="20261125200000 +0000" stop="20261125210000 +0000"><title>Nobody</title></programme>
 <programme channel="film" start="bad" stop="20261125220000"><title>Skipped</title></programme>
</tv>
)";

QJsonObject object(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

} // namespace

class TestLumoGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(m_server.listen());
    }

    void oneLinePerEntryInPlaylistOrder()
    {
        writeFile(m_dir, u"news.xml"_s, news);
        const QString playlist = writeFile(
            m_dir, u"list.m3u"_s,
            "#EXTM3U x-tvg-url=\"news.xml\"\n"
            "#EXTINF:-1 tvg-id=\"news.uk\" tvg-shift=\"-1\",News (shifted)\nhttp://h/1\n"
            "#EXTINF:-1 tvg-id=\"News.uk\",News\nhttp://h/2\n"
            "#EXTINF:-1,Nothing\nhttp://h/3\n"
            "#EXTINF:-1 tvg-name=\"Cin\xC3\xA9_Plus\",Films\nhttp://h/4\n");
        const Result result = runGuide({playlist, u"--at"_s, u"2026-11-25T21:30:00+01:00"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err,
                 QByteArray("1 programme of \xE2\x80\x9Cnews.xml\xE2\x80\x9D has a time that "
                            "cannot be read and is left out.\n"));
        QCOMPARE(result.lines.size(), 4);
        // Exactly as documented: keys in order, times in UTC with the shift applied.
        QCOMPARE(result.lines[1],
                 QByteArray(R"({"name":"News","now":{"title":"News at Eight & More",)"
                            R"("start":"2026-11-25T20:00:00Z","stop":"2026-11-25T21:00:00Z"},)"
                            R"("next":{"title":"Nine <Live>","start":"2026-11-25T21:00:00Z",)"
                            R"("stop":"2026-11-25T22:00:00Z"}})"));
        const QJsonObject shifted = object(result.lines[0]);
        QCOMPARE(shifted[u"name"_s].toString(), u"News (shifted)"_s);
        QCOMPARE(shifted[u"now"_s][u"title"_s].toString(), u"Nine <Live>"_s);
        QCOMPARE(shifted[u"now"_s][u"start"_s].toString(), u"2026-11-25T20:00:00Z"_s);
        QVERIFY(shifted[u"next"_s].isNull());
        QCOMPARE(result.lines[2], QByteArray(R"({"name":"Nothing","now":null,"next":null})"));
        const QJsonObject films = object(result.lines[3]);
        QCOMPARE(films[u"now"_s][u"title"_s].toString(), u"Café"_s);
        QCOMPARE(films[u"now"_s][u"start"_s].toString(), u"2026-11-25T19:30:00Z"_s);
    }

    void aPlaylistFromTheNetworkNamesNoLocalGuide()
    {
        const QString guidePath = writeFile(m_dir, u"local-news.xml"_s, news);
        const QString playlist
            = writeFile(m_dir, u"remote.m3u"_s,
                        "#EXTM3U x-tvg-url=\"FILE://" + guidePath.toUtf8()
                            + "\"\n#EXTINF:-1 tvg-id=\"News.uk\",News\nhttp://h/2\n");
        const QStringList at {u"--at"_s, u"2026-11-25T20:30:00Z"_s};
        const Result remote
            = runGuide(QStringList {playlist} + at
                       + QStringList {u"--base"_s, u"http://lists.example/tv.m3u"_s});
        QCOMPARE(remote.exitCode, 0);
        QCOMPARE(remote.err,
                 QByteArray("The programme guide \xE2\x80\x9Clocal-news.xml\xE2\x80\x9D "
                            "couldn\xE2\x80\x99t be loaded. A playlist from the network "
                            "cannot name a file on this computer.\n"));
        QVERIFY(object(remote.lines.value(0))[u"now"_s].isNull());
        // Read as a file of this computer, the same playlist may.
        const Result local = runGuide(QStringList {playlist} + at);
        QCOMPARE(object(local.lines.value(0))[u"now"_s][u"title"_s].toString(),
                 u"News at Eight & More"_s);
    }

    void hostileGuidesKeepMemoryToWhatIsKept_data()
    {
        using namespace HostileGuides;
        QTest::addColumn<QString>("name");
        QTest::addColumn<std::function<void(const Sink &)>>("write");
        QTest::newRow("2 million channels")
            << u"channels.xml.gz"_s
            << std::function([](const Sink &sink) { manyChannels(2'000'000, false, sink); });
        QTest::newRow("3 million identical channels")
            << u"same.xml.gz"_s
            << std::function([](const Sink &sink) { manyChannels(3'000'000, true, sink); });
        QTest::newRow("300 MB title")
            << u"title.xml.gz"_s
            << std::function([](const Sink &sink) { longTitle(qint64(300) << 20, sink); });
        QTest::newRow("10^9 nested entities")
            << u"nested.xml.gz"_s
            << std::function([](const Sink &sink) { sink(nestedEntities(9)); });
        QTest::newRow("5 GB of entities")
            << u"entities.xml.gz"_s
            << std::function([](const Sink &sink) { sink(repeatedEntity(1 << 20, 5000)); });
    }

    void hostileGuidesKeepMemoryToWhatIsKept()
    {
        QFETCH(QString, name);
        QFETCH(std::function<void(const HostileGuides::Sink &)>, write);
        const QString guidePath = m_dir.filePath(name);
        QVERIFY(HostileGuides::writeGzip(guidePath, write));
        const QString playlist = writeFile(m_dir, u"hostile.m3u"_s,
                                           "#EXTM3U\n#EXTINF:-1 tvg-id=\"a\",A\nhttp://h/a\n"
                                           "#EXTINF:-1 tvg-id=\"same\",Same\nhttp://h/s\n"
                                           "#EXTINF:-1 tvg-id=\"c7\",Seven\nhttp://h/7\n");
        const Result result = runGuide({playlist, guidePath, u"--at"_s, u"2026-11-25T19:30:00Z"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(object(result.lines.value(0))[u"now"_s][u"title"_s].toString(), u"After"_s);
        // The largest child so far: every earlier one is checked against the same bound.
        rusage usage {};
        QCOMPARE(getrusage(RUSAGE_CHILDREN, &usage), 0);
        QVERIFY2(usage.ru_maxrss < 300 * 1024, qPrintable(QString::number(usage.ru_maxrss)));
        QFile::remove(guidePath);
    }

    void guidesOnTheCommandLineReplaceTheHeaders()
    {
        m_server.route(u"/tv/guide.xml.gz"_s, HttpResponse::text(QByteArray()));
        writeFile(m_dir, u"other.xml"_s,
                  "<tv><channel id=\"News.uk\"/><programme channel=\"News.uk\" "
                  "start=\"20261125200000 +0000\" stop=\"20261125220000 +0000\">"
                  "<title>Other</title></programme></tv>");
        const QString playlist
            = writeFile(m_dir, u"header.m3u"_s,
                        "#EXTM3U url-tvg=\"" + m_server.url(u"/tv/guide.xml.gz"_s).toEncoded()
                            + "\"\n#EXTINF:-1 tvg-id=\"News.uk\",News\nhttp://h/1\n");
        const Result given = runGuide(
            {playlist, m_dir.filePath(u"other.xml"_s), u"--at"_s, u"2026-11-25T20:30:00Z"_s});
        QCOMPARE(given.exitCode, 0);
        QCOMPARE(object(given.lines.value(0))[u"now"_s][u"title"_s].toString(), u"Other"_s);
        QCOMPARE(m_server.requestCount(u"/tv/guide.xml.gz"_s), 0);

        // Without guides given, the header's address is loaded: here an empty answer.
        const Result header = runGuide({playlist, u"--at"_s, u"2026-11-25T20:30:00Z"_s});
        QCOMPARE(header.exitCode, 0);
        QCOMPARE(m_server.requestCount(u"/tv/guide.xml.gz"_s), 1);
        QCOMPARE(header.lines, QList<QByteArray> {R"({"name":"News","now":null,"next":null})"});
        QCOMPARE(header.err,
                 u"The file “guide.xml.gz” isn’t a programme guide (XMLTV).\n"_s.toUtf8());
    }

    void theMomentMustCarryItsZone()
    {
        const QString playlist
            = writeFile(m_dir, u"zone.m3u"_s, "#EXTM3U\n#EXTINF:-1,News\nhttp://h/1\n");
        for (const QString &at : {u"2026-11-25T20:30:00"_s, u"2026-11-25 20:30:00Z"_s,
                                  u"tomorrow"_s, u"2026-11-25T20:30:00+0100"_s}) {
            const Result result = runGuide({playlist, u"--at"_s, at});
            QCOMPARE(result.exitCode, 2);
            QVERIFY(result.lines.isEmpty());
            QVERIFY2(result.err.contains("usage: lumo-cli guide"), result.err.constData());
        }
        QCOMPARE(runGuide({playlist}).exitCode, 2);
        QCOMPARE(runGuide({u"--at"_s, u"2026-11-25T20:30:00Z"_s}).exitCode, 2);
        const Result fine = runGuide({playlist, u"--at"_s, u"2026-11-25T20:30:00.5-03:30"_s});
        QCOMPARE(fine.exitCode, 0);
        QCOMPARE(fine.lines.size(), 1);
    }

    void aMissingPlaylistFails()
    {
        const Result result
            = runGuide({m_dir.filePath(u"none.m3u"_s), u"--at"_s, u"2026-11-25T20:30:00Z"_s});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.err.contains("cannot read"));
    }

private:
    QTemporaryDir m_dir;
    LocalHttpServer m_server;
};

QTEST_GUILESS_MAIN(TestLumoGuide)
#include "tst_lumoguide.moc"
