// Guides loaded for a playlist from files and a real local HTTP server, and the bad ones: cut
// short, packed bombs, not XML, silent servers, missing files; each ends in a notice with what
// could be read kept.
#include "hostileguides.h"
#include "httpserver/localhttpserver.h"
#include "model/guideloader.h"
#include "sources/playlistparser.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// 2026-11-25 20:00:00 UTC
constexpr qint64 evening = 1795636800;

QByteArray packed(const QString &tool, const QByteArray &input)
{
    QProcess process;
    process.start(tool, {u"-c"_s});
    process.waitForStarted();
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return process.readAllStandardOutput();
}

// A guide of one channel with hour-long programmes from 18:00 to 23:00, titled prefix + hour.
QByteArray guide(const QByteArray &channel, const QByteArray &prefix)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n<channel id=\"" + channel
        + "\"><display-name>" + channel + "</display-name></channel>\n";
    for (int hour = 18; hour < 23; ++hour) {
        xml += "<programme channel=\"" + channel + "\" start=\"20261125" + QByteArray::number(hour)
            + "0000 +0000\" stop=\"20261125" + QByteArray::number(hour + 1) + "0000 +0000\"><title>"
            + prefix + QByteArray::number(hour) + "</title></programme>\n";
    }
    return xml + "</tv>\n";
}

const QList<PlaylistEntry> &entries()
{
    static const QList<PlaylistEntry> list = PlaylistParser::parse(
        QByteArrayView("#EXTM3U\n#EXTINF:-1 tvg-id=\"one\",One\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-id=\"two\",Two\nhttp://h/2\n"),
        QUrl(u"http://lists.example/tv.m3u"_s));
    return list;
}

// One entry for the channel "a" of the hostile guides.
const QList<PlaylistEntry> &oneChannelA()
{
    static const QList<PlaylistEntry> list
        = PlaylistParser::parse(QByteArrayView("#EXTM3U\n#EXTINF:-1 tvg-id=\"a\",A\nhttp://h/a\n"),
                                QUrl(u"http://lists.example/a.m3u"_s));
    return list;
}

QString nowTitle(const GuideLoader::Result &result, qsizetype entry)
{
    const ProgrammeGuide::NowNext found = result.guide->at(entry, evening + 60);
    return found.now ? found.now->title : QString();
}

} // namespace

class TestGuideLoader : public QObject
{
    Q_OBJECT

public:
    // Loads guides with the loader and waits for the result.
    GuideLoader::Result load(const QList<QUrl> &guides, const GuideLoader::Limits &limits = {},
                             const QList<PlaylistEntry> &playlist = entries())
    {
        GuideLoader loader;
        loader.setLimits(limits);
        std::optional<GuideLoader::Result> result;
        loader.load({guides, playlist, std::nullopt, evening, {}}, this,
                    [&result](const GuideLoader::Result &loaded) {
                        if (loaded.complete)
                            result = loaded;
                    });
        if (!QTest::qWaitFor([&] { return result.has_value(); }, 60000))
            qFatal("the guides did not load");
        return *result;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(m_server.listen());
    }

    void guidesOverHttpPackedOrNotAreMergedInOrder()
    {
        m_server.route(u"/one.xml.gz"_s,
                       HttpResponse::text(packed(u"gzip"_s, guide("one", "A")), "text/plain"));
        // Named as gzip, packed as xz: the bytes tell.
        m_server.route(u"/two.gz"_s,
                       HttpResponse::text(packed(u"xz"_s, guide("two", "B")), "text/plain"));
        m_server.route(u"/both.xml"_s, HttpResponse::text(guide("one", "C") + "", "text/xml"));
        const GuideLoader::Result result
            = load({m_server.url(u"/one.xml.gz"_s), m_server.url(u"/two.gz"_s),
                    m_server.url(u"/both.xml"_s)});
        QVERIFY2(result.notices.isEmpty(), qPrintable(result.notices.join(u'\n')));
        QCOMPARE(nowTitle(result, 0), u"A20"_s); // the first guide wins for one start
        QCOMPARE(nowTitle(result, 1), u"B20"_s);
        QCOMPARE(result.guide->matchedEntries(), 2);
    }

    void aGzipBombIsReadUpToTheLimit()
    {
        // The channel and two programmes, then 64 MB of spaces: about 64 KB packed.
        QByteArray xml = guide("one", "A");
        xml.chop(QByteArray("</tv>\n").size());
        xml += QByteArray(64 << 20, ' ') + "</tv>\n";
        const QByteArray bomb = packed(u"gzip"_s, xml);
        QVERIFY(bomb.size() < 200 * 1024);
        m_server.route(u"/bomb.xml.gz"_s, HttpResponse::text(bomb, "application/gzip"));
        GuideLoader::Limits limits;
        limits.fetch.maxUnpackedBytes = 8 << 20;
        const GuideLoader::Result result = load({m_server.url(u"/bomb.xml.gz"_s)}, limits);
        QCOMPARE(result.notices,
                 QStringList {u"The programme guide “bomb.xml.gz” is larger than 8 MB unpacked: "
                              "only its first 8 MB are used."_s});
        QCOMPARE(nowTitle(result, 0), u"A20"_s);
    }

    void aGuideCutShortKeepsWhatCame()
    {
        const QByteArray whole = packed(u"gzip"_s, guide("one", "A"));
        const QString path = m_dir.filePath(u"cut.xml.gz"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(whole.first(whole.size() - 12)); // the trailer and a little more
        file.close();
        const GuideLoader::Result result = load({QUrl::fromLocalFile(path)});
        QCOMPARE(result.notices,
                 QStringList {u"The programme guide “cut.xml.gz” is damaged or cut short: what "
                              "could be read of it is used."_s});
        QCOMPARE(nowTitle(result, 0), u"A20"_s);
    }

    void somethingElseIsNoGuide()
    {
        m_server.route(u"/page.html"_s, HttpResponse::text("\x89PNG\r\n\x1a\n\x00\x01 binary"));
        m_server.route(u"/gone.xml"_s, HttpResponse::notFound());
        m_server.route(u"/other.xml"_s, HttpResponse::text(guide("two", "B")));
        const GuideLoader::Result result
            = load({m_server.url(u"/page.html"_s), m_server.url(u"/gone.xml"_s),
                    QUrl::fromLocalFile(m_dir.filePath(u"missing.xml"_s)),
                    QUrl(u"ftp://example.com/g.xml"_s), m_server.url(u"/other.xml"_s)});
        QCOMPARE(result.notices,
                 (QStringList {
                     u"The file “page.html” isn’t a programme guide (XMLTV)."_s,
                     u"The programme guide “gone.xml” couldn’t be loaded. The server returned "
                     "an error (404)."_s,
                     u"The programme guide “missing.xml” couldn’t be loaded. There is no such "
                     "file."_s,
                     u"The programme guide “g.xml” couldn’t be loaded. Only http and https "
                     "addresses can be downloaded."_s,
                 }));
        // The good guide among them still counts.
        QCOMPARE(nowTitle(result, 1), u"B20"_s);
    }

    void aServerThatNeverAnswersTimesOut()
    {
        HttpResponse silent;
        silent.neverAnswer = true;
        m_server.route(u"/silent.xml"_s, silent);
        m_server.route(u"/fine.xml"_s, HttpResponse::text(guide("one", "A")));
        GuideLoader::Limits limits;
        limits.fetch.idleTimeoutMs = 400;
        const GuideLoader::Result result
            = load({m_server.url(u"/silent.xml"_s), m_server.url(u"/fine.xml"_s)}, limits);
        QCOMPARE(result.notices,
                 QStringList {u"The programme guide “silent.xml” couldn’t be loaded. The "
                              "request timed out."_s});
        QCOMPARE(nowTitle(result, 0), u"A20"_s);
    }

    void aGuideThatNeverEndsMeetsItsDeadline()
    {
        // One byte at a time, each well within the idle time-out: only the deadline ends it.
        HttpResponse drip = HttpResponse::text(guide("two", "D"));
        drip.dripIntervalMs = 50;
        m_server.route(u"/drip.xml"_s, drip);
        m_server.route(u"/first.xml"_s, HttpResponse::text(guide("one", "A")));
        GuideLoader::Limits limits;
        limits.fetch.idleTimeoutMs = 1000;
        limits.fetch.deadlineMs = 2000;
        GuideLoader loader;
        loader.setLimits(limits);
        std::vector<GuideLoader::Result> results;
        loader.load({{m_server.url(u"/first.xml"_s), m_server.url(u"/drip.xml"_s)},
                     entries(),
                     std::nullopt,
                     evening,
                     {}},
                    this,
                    [&results](const GuideLoader::Result &loaded) { results.push_back(loaded); });
        // The first guide shows as soon as it has come, without waiting for the second.
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), size_t(1), 1500);
        QVERIFY(!results[0].complete);
        QCOMPARE(nowTitle(results[0], 0), u"A20"_s);
        QVERIFY(results[0].notices.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), size_t(2), 5000);
        QVERIFY(results[1].complete);
        QCOMPARE(nowTitle(results[1], 0), u"A20"_s);
        QCOMPARE(results[1].notices,
                 QStringList {u"The programme guide “drip.xml” couldn’t be loaded. The request "
                              "timed out."_s});
        QCOMPARE(results[1].firstNewNotice, 0);
    }

    void guidesShowInTheirOrderOfPrecedence()
    {
        // The second guide comes first but waits for the first, which takes precedence.
        m_server.route(u"/late.xml"_s, [body = guide("one", "L")](const HttpRequest &) {
            HttpResponse response = HttpResponse::text(body);
            response.delayMs = 800;
            return response;
        });
        m_server.route(u"/early.xml"_s, HttpResponse::text(guide("two", "E")));
        m_server.route(u"/missing.xml"_s, HttpResponse::notFound());
        GuideLoader loader;
        std::vector<GuideLoader::Result> results;
        loader.load({{m_server.url(u"/late.xml"_s), m_server.url(u"/early.xml"_s),
                      m_server.url(u"/missing.xml"_s)},
                     entries(),
                     std::nullopt,
                     evening,
                     {}},
                    this,
                    [&results](const GuideLoader::Result &loaded) { results.push_back(loaded); });
        QTRY_VERIFY_WITH_TIMEOUT(!results.empty() && results.back().complete, 10000);
        // Everything came while the first one was awaited: one showing, all of it.
        QCOMPARE(results.size(), size_t(1));
        QCOMPARE(nowTitle(results[0], 0), u"L20"_s);
        QCOMPARE(nowTitle(results[0], 1), u"E20"_s);
        QCOMPARE(results[0].notices.size(), 1);
    }

    void aGuideThatStopsMidwayKeepsWhatCame()
    {
        // Sends the guide slowly and drops the connection part of the way.
        m_server.route(u"/stall.xml"_s, [body = guide("one", "A")](const HttpRequest &) {
            HttpResponse response;
            response.body = body;
            response.bytesPerSecond = 2000;
            response.closeAfterMs = 300;
            return response;
        });
        const GuideLoader::Result result = load({m_server.url(u"/stall.xml"_s)});
        // A programme cut off inside its start tag is not one with an unreadable time.
        QCOMPARE(result.notices,
                 QStringList {u"The programme guide “stall.xml” is damaged or cut short: what "
                              "could be read of it is used."_s});
        // The channel came before the cut, its programmes did not.
        QCOMPARE(result.guide->matchedEntries(), 1);
    }

    void atMostFourAtOnce()
    {
        m_server.hold(QRegularExpression(u"^/held"_s));
        QList<QUrl> guides;
        for (int i = 0; i < 6; ++i) {
            const QString path = u"/held%1.xml"_s.arg(i);
            m_server.route(path, HttpResponse::text(guide("one", "H" + QByteArray::number(i))));
            guides.append(m_server.url(path));
        }
        GuideLoader loader;
        std::optional<GuideLoader::Result> result;
        loader.load({guides, entries(), std::nullopt, evening, {}}, this,
                    [&result](const GuideLoader::Result &loaded) { result = loaded; });
        QTRY_COMPARE(m_server.heldCount(), 4);
        QTest::qWait(300);
        QCOMPARE(m_server.heldCount(), 4);
        m_server.hold(QRegularExpression());
        QTRY_VERIFY_WITH_TIMEOUT(result.has_value(), 20000);
        QCOMPARE(nowTitle(*result, 0), u"H020"_s);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(m_server.requestCount(u"/held%1.xml"_s.arg(i)), 1);
    }

    void aNewerLoadReplacesTheOlder()
    {
        m_server.route(u"/first.xml"_s, HttpResponse::text(guide("one", "F")));
        m_server.route(u"/second.xml"_s, HttpResponse::text(guide("one", "S")));
        m_server.hold(QRegularExpression(u"^/first"_s));
        GuideLoader loader;
        int calls = 0;
        QString title;
        const auto done = [&](const GuideLoader::Result &loaded) {
            ++calls;
            title = nowTitle(loaded, 0);
        };
        loader.load({{m_server.url(u"/first.xml"_s)}, entries(), std::nullopt, evening, {}}, this,
                    done);
        QTRY_COMPARE(m_server.heldCount(), 1);
        loader.load({{m_server.url(u"/second.xml"_s)}, entries(), std::nullopt, evening, {}}, this,
                    done);
        QTRY_COMPARE(calls, 1);
        QCOMPARE(title, u"S20"_s);
        m_server.hold(QRegularExpression());
        // The first one's connection is dropped, and its result never comes.
        QTRY_COMPARE(m_server.openConnectionCount(u"/first.xml"_s), 0);
        QTest::qWait(200);
        QCOMPARE(calls, 1);
        loader.cancel();
    }

    void aNetworkPlaylistsGuidesComeOnlyFromTheNetwork()
    {
        const QString path = m_dir.filePath(u"local.xml"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(guide("one", "L"));
        file.close();
        m_server.route(u"/net.xml"_s, HttpResponse::text(guide("two", "N")));
        const QUrl local = QUrl::fromLocalFile(path);
        const QUrl other(u"ftp://files.example/g.xml"_s);
        GuideLoader loader;
        std::optional<GuideLoader::Result> result;
        const QList<QUrl> guides {local, other, m_server.url(u"/net.xml"_s)};
        loader.load({guides, entries(), std::nullopt, evening, guides}, this,
                    [&result](const GuideLoader::Result &loaded) { result = loaded; });
        QTRY_VERIFY_WITH_TIMEOUT(result.has_value(), 20000);
        const QString refused = u"The programme guide “%1” couldn’t be loaded. A playlist from "
                                "the network cannot name a file on this computer."_s;
        QCOMPARE(result->notices,
                 (QStringList {refused.arg(u"local.xml"_s), refused.arg(u"g.xml"_s)}));
        QCOMPARE(nowTitle(*result, 0), QString());
        QCOMPARE(nowTitle(*result, 1), u"N20"_s);
        // The same file is read for a playlist of this computer.
        QCOMPARE(nowTitle(load({local}), 0), u"L20"_s);
    }

    void entityBombsEndInTheirProgrammes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("10^7 nested") << HostileGuides::nestedEntities(7);
        QTest::newRow("10^9 nested") << HostileGuides::nestedEntities(9);
        QTest::newRow("quadratic") << HostileGuides::repeatedEntity(57'000, 2'000);
        // A few hundred bytes packed, gigabytes once expanded.
        QTest::newRow("gzip") << HostileGuides::gzip(HostileGuides::repeatedEntity(1 << 20, 5000));
    }

    void entityBombsEndInTheirProgrammes()
    {
        QFETCH(QByteArray, bytes);
        m_server.route(u"/bomb.xml"_s, HttpResponse::text(bytes, "text/xml"));
        const GuideLoader::Result result = load({m_server.url(u"/bomb.xml"_s)}, {}, oneChannelA());
        const ProgrammeGuide::NowNext found = result.guide->at(0, HostileGuides::firstStart + 60);
        QVERIFY(found.now && found.next);
        QCOMPARE(found.now->title, u"Before"_s);
        QVERIFY2(found.next->title.size() < 20, qPrintable(found.next->title.left(40)));
        QCOMPARE(result.guide->at(0, HostileGuides::firstStart + 3660).now->title, u"After"_s);
    }

    void aLoaderClosedDuringAReadLetsGoAtOnce_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("entity bomb") << u"/closed-bomb.xml"_s;
        QTest::newRow("endless guide") << u"/endless.xml"_s;
    }

    void aLoaderClosedDuringAReadLetsGoAtOnce()
    {
        QFETCH(QString, path);
        m_server.route(u"/closed-bomb.xml"_s,
                       HttpResponse::text(HostileGuides::nestedEntities(10), "text/xml"));
        QByteArray programmes;
        while (programmes.size() < 4 << 20)
            programmes += "<programme channel=\"a\" start=\"20261125200000 +0000\"><title>T"
                + QByteArray::number(programmes.size()) + "</title></programme>\n";
        HttpResponse endless = HttpResponse::text("<tv>" + programmes, "text/xml");
        endless.generatedBytes = qint64(8) << 30;
        m_server.route(u"/endless.xml"_s, endless);

        auto loader = std::make_unique<GuideLoader>();
        bool called = false;
        loader->load({{m_server.url(path)}, oneChannelA(), std::nullopt, evening, {}}, this,
                     [&called](const GuideLoader::Result &) { called = true; });
        QTRY_COMPARE(m_server.requestCount(path), 1);
        QTest::qWait(300);
        QElapsedTimer closing;
        closing.start();
        loader.reset();
        QVERIFY2(closing.elapsed() < 1000, qPrintable(QString::number(closing.elapsed())));
        if (path == u"/endless.xml"_s)
            QVERIFY(!called);
    }

    void noGuidesGiveAnEmptyGuide()
    {
        const GuideLoader::Result result = load({});
        QVERIFY(result.guide);
        QVERIFY(result.guide->isEmpty());
        QVERIFY(result.notices.isEmpty());
    }

private:
    QTemporaryDir m_dir;
    LocalHttpServer m_server;
};

QTEST_GUILESS_MAIN(TestGuideLoader)
#include "tst_guideloader.moc"
