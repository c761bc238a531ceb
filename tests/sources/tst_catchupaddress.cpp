// The archive address of a past programme, mode by mode and placeholder by placeholder.
#include "sources/catchupaddress.h"
#include "sources/extinfattributes.h"
#include "sources/playlistparser.h"

#include <QTest>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

// 2024-11-26 18:00 to 19:00 UTC, asked for at 21:00.
constexpr qint64 start = 1732644000;
constexpr qint64 stop = start + 3600;
constexpr qint64 now = start + 3 * 3600;

void useTimeZone(const char *zone)
{
    qputenv("TZ", zone);
    tzset();
}

CatchupSettings settings(CatchupMode mode, const QString &source = {}, qint32 correction = 0)
{
    CatchupSettings made;
    made.mode = mode;
    made.source = source;
    made.correctionSeconds = correction;
    return made;
}

CatchupAttributes attributesOf(const QString &line)
{
    return CatchupAttributes::read(ExtinfAttributes(line));
}

} // namespace

class TestCatchupAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTimeZone("UTC"); }

    void addresses_data()
    {
        QTest::addColumn<CatchupSettings>("settings");
        QTest::addColumn<QString>("channel");
        QTest::addColumn<qint32>("shift");
        QTest::addColumn<QString>("catchupId");
        QTest::addColumn<QString>("expected"); // empty: no archive

        const auto standard = CatchupMode::standard;
        QTest::newRow("default, braces")
            << settings(standard,
                        u"http://arch.example/ch1/{utc}-{utcend}.ts?d={duration}&n={lutc}"_s)
            << u"http://tv.example/ch1.m3u8"_s << 0 << QString()
            << u"http://arch.example/ch1/1732644000-1732647600.ts?d=3600&n=1732654800"_s;
        QTest::newRow("default, dollars")
            << settings(standard,
                        u"http://a.example/x?s=${start}&e=${end}&n=${now}&t=${timestamp}"
                        "&d=${duration}&o=${offset}"_s)
            << u"http://tv.example/ch1"_s << 0 << QString()
            << u"http://a.example/x?s=1732644000&e=1732647600&n=1732654800&t=1732654800"
               "&d=3600&o=10800"_s;
        QTest::newRow("default, every occurrence, divisions")
            << settings(standard, u"http://a.example/{utc}/{utc}?h={duration:7}&m={offset:60}"_s)
            << u"http://tv.example/ch1"_s << 0 << QString()
            << u"http://a.example/1732644000/1732644000?h=514&m=180"_s;
        QTest::newRow("default, local fields")
            << settings(standard, u"https://a.example/{Y}/{m}/{d}/{H}{M}{S}.ts"_s)
            << u"http://tv.example/ch1"_s << 0 << QString()
            << u"https://a.example/2024/11/26/180000.ts"_s;
        QTest::newRow("default, no source")
            << settings(standard) << u"http://tv.example/ch1"_s << 0 << QString() << QString();
        QTest::newRow("default, a file is no archive")
            << settings(standard, u"file:///etc/passwd?{utc}"_s) << u"http://tv.example/ch1"_s << 0
            << QString() << QString();
        QTest::newRow("default, mpv's own scheme is no archive")
            << settings(standard, u"lavf://http://a.example/{utc}"_s) << u"http://tv.example/ch1"_s
            << 0 << QString() << QString();
        QTest::newRow("default, relative source is no archive")
            << settings(standard, u"archive/{utc}.ts"_s) << u"http://tv.example/ch1"_s << 0
            << QString() << QString();

        QTest::newRow("append, port and query")
            << settings(CatchupMode::append, u"&utc={utc}&end={utcend}"_s)
            << u"http://tv.example:8080/live/ch1.m3u8?token=abc"_s << 0 << QString()
            << u"http://tv.example:8080/live/ch1.m3u8?token=abc&utc=1732644000&end=1732647600"_s;
        QTest::newRow("append, no source")
            << settings(CatchupMode::append) << u"http://tv.example/ch1"_s << 0 << QString()
            << QString();

        QTest::newRow("shift") << settings(CatchupMode::shift) << u"http://tv.example/ch1.m3u8"_s
                               << 0 << QString()
                               << u"http://tv.example/ch1.m3u8?utc=1732644000&lutc=1732654800"_s;
        QTest::newRow("shift, query kept")
            << settings(CatchupMode::shift) << u"https://tv.example:8443/ch1.m3u8?token=abc"_s << 0
            << QString()
            << u"https://tv.example:8443/ch1.m3u8?token=abc&utc=1732644000&lutc=1732654800"_s;
        QTest::newRow("shift, negative correction")
            << settings(CatchupMode::shift, {}, -5400) << u"http://tv.example/ch1"_s << 0
            << QString() << u"http://tv.example/ch1?utc=1732638600&lutc=1732654800"_s;
        QTest::newRow("shift, tvg-shift")
            << settings(CatchupMode::shift) << u"http://tv.example/ch1"_s << 7200 << QString()
            << u"http://tv.example/ch1?utc=1732636800&lutc=1732654800"_s;
        QTest::newRow("shift, correction and tvg-shift")
            << settings(CatchupMode::shift, {}, 1800) << u"http://tv.example/ch1"_s << -3600
            << QString() << u"http://tv.example/ch1?utc=1732649400&lutc=1732654800"_s;

        const auto flussonic = CatchupMode::flussonic;
        const auto fs = CatchupMode::flussonicTs;
        QTest::newRow("flussonic, mpegts")
            << settings(flussonic) << u"http://fs.example/ch1/mpegts"_s << 0 << QString()
            << u"http://fs.example/ch1/timeshift_abs-1732644000.ts"_s;
        QTest::newRow("flussonic, index.m3u8, port and query")
            << settings(flussonic) << u"https://fs.example:8443/ch1/index.m3u8?token=abc"_s << 0
            << QString() << u"https://fs.example:8443/ch1/timeshift_rel-10800.m3u8?token=abc"_s;
        QTest::newRow("flussonic, named playlist")
            << settings(flussonic) << u"http://fs.example/news/ch1/video.m3u8"_s << 0 << QString()
            << u"http://fs.example/news/ch1/video-timeshift_rel-10800.m3u8"_s;
        QTest::newRow("flussonic, other shape")
            << settings(flussonic) << u"http://fs.example/ch1"_s << 0 << QString()
            << u"http://fs.example/ch1/timeshift_rel-10800.m3u8"_s;
        QTest::newRow("fs, other shape")
            << settings(fs) << u"http://fs.example/ch1/stream.flv?token=abc"_s << 0 << QString()
            << u"http://fs.example/ch1/timeshift_abs-1732644000.ts?token=abc"_s;
        QTest::newRow("fs, index.m3u8 keeps the playlist form")
            << settings(fs) << u"http://fs.example/ch1/index.m3u8"_s << 0 << QString()
            << u"http://fs.example/ch1/timeshift_rel-10800.m3u8"_s;
        QTest::newRow("flussonic-ts, mpegts")
            << settings(fs) << u"http://fs.example/ch1/mpegts"_s << 0 << QString()
            << u"http://fs.example/ch1/timeshift_abs-1732644000.ts"_s;
        QTest::newRow("flussonic, no path")
            << settings(flussonic) << u"http://fs.example/"_s << 0 << QString() << QString();

        const auto xc = CatchupMode::xc;
        QTest::newRow("xc, live and port")
            << settings(xc) << u"http://xc.example:8000/live/user/pass/1234.ts"_s << 0 << QString()
            << u"http://xc.example:8000/timeshift/user/pass/60/2024-11-26:18-00/1234.ts"_s;
        QTest::newRow("xc, without live, hls")
            << settings(xc) << u"https://xc.example/user/pass/1234.m3u8"_s << 0 << QString()
            << u"https://xc.example/timeshift/user/pass/60/2024-11-26:18-00/1234.m3u8"_s;
        QTest::newRow("xc, no extension")
            << settings(xc) << u"http://xc.example/user/pass/1234"_s << 0 << QString()
            << u"http://xc.example/timeshift/user/pass/60/2024-11-26:18-00/1234.ts"_s;
        QTest::newRow("xc, tvg-shift moves the date")
            << settings(xc) << u"http://xc.example/user/pass/1234.ts"_s << 19 * 3600 << QString()
            << u"http://xc.example/timeshift/user/pass/60/2024-11-25:23-00/1234.ts"_s;
        QTest::newRow("xc, other shape")
            << settings(xc) << u"http://xc.example/user/1234.ts"_s << 0 << QString() << QString();

        QTest::newRow("vod, the id is the address")
            << settings(CatchupMode::vod) << u"http://tv.example/ch1"_s << 0
            << u"http://vod.example/p/42.mp4"_s << u"http://vod.example/p/42.mp4"_s;
        QTest::newRow("vod, the id in a source")
            << settings(CatchupMode::vod, u"http://vod.example/{catchup-id}.m3u8?s={utc}"_s)
            << u"http://tv.example/ch1"_s << 0 << u"42"_s
            << u"http://vod.example/42.m3u8?s=1732644000"_s;
        QTest::newRow("vod, no id") << settings(CatchupMode::vod) << u"http://tv.example/ch1"_s << 0
                                    << QString() << QString();
    }

    void addresses()
    {
        QFETCH(CatchupSettings, settings);
        QFETCH(QString, channel);
        QFETCH(qint32, shift);
        QFETCH(QString, catchupId);
        QFETCH(QString, expected);
        const std::optional<QUrl> url
            = CatchupAddress::of(settings, QUrl(channel), {start, stop, catchupId}, now, shift);
        if (expected.isEmpty()) {
            QVERIFY2(!url, qPrintable(url ? url->toString() : QString()));
            return;
        }
        QVERIFY(url);
        QCOMPARE(url->toString(QUrl::FullyEncoded), expected);
    }

    void unknownPlaceholdersStayAsWritten()
    {
        const CatchupAddress::Moments moments {start, 3600, now};
        QCOMPARE(CatchupAddress::expand(u"{foo}/${bar}/{utc}/${utc}/{duration:x}/{offset:0}/{",
                                        moments, {}),
                 u"{foo}/${bar}/1732644000/${utc}/{duration:x}/{offset:0}/{"_s);
    }

    void offsetsNeverGoBelowZero()
    {
        const CatchupAddress::Moments moments {start, 3600, start - 100};
        QCOMPARE(CatchupAddress::expand(u"{offset:1}/${offset}/{offset:60}", moments, {}),
                 u"0/0/0"_s);
    }

    void localFieldsFollowDaylightSaving()
    {
        useTimeZone("Europe/Berlin");
        const auto fields = [](qint64 at) {
            return CatchupAddress::expand(u"{Y}-{m}-{d}:{H}-{M}-{S}", {at, 60, at + 60}, {});
        };
        // Summer time, then the hour that comes twice when the clocks go back.
        QCOMPARE(fields(1719835205), u"2024-07-01:14-00-05"_s);
        QCOMPARE(fields(1729989000), u"2024-10-27:02-30-00"_s);
        QCOMPARE(fields(1729992600), u"2024-10-27:02-30-00"_s);
        QCOMPARE(fields(1729996200), u"2024-10-27:03-30-00"_s);
        // The spring change skips an hour.
        QCOMPARE(fields(1711846800), u"2024-03-31:03-00-00"_s);
        const std::optional<QUrl> url
            = CatchupAddress::of(settings(CatchupMode::xc), QUrl(u"http://xc.example/u/p/7.ts"_s),
                                 {1729992600, 1729992600 + 5400, {}}, 1729992600 + 7200, 0);
        QVERIFY(url);
        QCOMPARE(url->toString(), u"http://xc.example/timeshift/u/p/90/2024-10-27:02-30/7.ts"_s);
        useTimeZone("UTC");
    }

    void theWindowHoldsWhatBeganInIt()
    {
        CatchupSettings settings;
        settings.days = 3;
        QVERIFY(settings.archives(now - 3 * 86400, now));
        QVERIFY(settings.archives(now - 60, now));
        QVERIFY(settings.archives(now, now));
        // Begun before the window: gone, though it ended inside it.
        QVERIFY(!settings.archives(now - 3 * 86400 - 1, now));
        QVERIFY(!settings.archives(now + 1, now));
        settings.days = 30;
        QCOMPARE(settings.windowDays(), CatchupSettings::maxDays);
        QVERIFY(!settings.archives(now - 15 * 86400, now));
        settings.days = 0;
        QVERIFY(!settings.archives(now - 60, now));
    }

    void reloadedSourcesFollowTheirFinestPlaceholder()
    {
        using Reach = CatchupAddress::Reach;
        QCOMPARE(CatchupAddress::reachOf(u"http://a/{utc}-{utcend}.ts"), Reach::whole);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/?s=${start}&d=${duration}"), Reach::whole);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/{duration:60}/{Y}-{m}-{d}:{H}-{M}/1.ts"),
                 Reach::whole);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/?utc={utc}&lutc={lutc}"),
                 Reach::fromStartToSecond);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/timeshift_abs-${start}.ts"),
                 Reach::fromStartToSecond);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/timeshift_rel-{offset:1}.m3u8"),
                 Reach::fromStartToSecond);
        QCOMPARE(CatchupAddress::reachOf(u"http://a/{Y}{m}{d}{H}{M}.ts"), Reach::fromStartToMinute);
    }

    void modesAreNamedCaseInsensitively_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode"); // -1: none
        QTest::newRow("default") << u"Default"_s << int(CatchupMode::standard);
        QTest::newRow("append") << u"APPEND"_s << int(CatchupMode::append);
        QTest::newRow("shift") << u"shift"_s << int(CatchupMode::shift);
        QTest::newRow("timeshift") << u"TimeShift"_s << int(CatchupMode::shift);
        QTest::newRow("flussonic") << u"flussonic"_s << int(CatchupMode::flussonic);
        QTest::newRow("flussonic-hls") << u"Flussonic-HLS"_s << int(CatchupMode::flussonic);
        QTest::newRow("flussonic-ts") << u"flussonic-ts"_s << int(CatchupMode::flussonicTs);
        QTest::newRow("fs") << u"FS"_s << int(CatchupMode::flussonicTs);
        QTest::newRow("xc") << u"xc"_s << int(CatchupMode::xc);
        QTest::newRow("vod") << u"VOD"_s << int(CatchupMode::vod);
        QTest::newRow("unknown") << u"archive"_s << -1;
        QTest::newRow("empty") << QString() << -1;
    }

    void modesAreNamedCaseInsensitively()
    {
        QFETCH(QString, name);
        QFETCH(int, mode);
        const std::optional<CatchupMode> found = CatchupSettings::modeNamed(name);
        QCOMPARE(found ? int(*found) : -1, mode);
    }

    void attributesFallBackToThePlaylistsLine()
    {
        const CatchupAttributes header = attributesOf(
            u"#EXTM3U catchup=\"Shift\" catchup-days=\"7\" catchup-correction=\"-1.5\""_s);
        const std::optional<CatchupSettings> inherited
            = CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1,One"_s), header);
        QVERIFY(inherited);
        QCOMPARE(inherited->mode, CatchupMode::shift);
        QCOMPARE(inherited->days, 7);
        QCOMPARE(inherited->correctionSeconds, -5400);
        QVERIFY(inherited->source.isNull());

        const std::optional<CatchupSettings> own = CatchupAttributes::resolve(
            attributesOf(u"#EXTINF:-1 catchup-type=\"append\" catchup-source=\"?a={utc}\" "
                         "catchup-days=\"2\" catchup-correction=\"0.5\",One"_s),
            header);
        QVERIFY(own);
        QCOMPARE(own->mode, CatchupMode::append);
        QCOMPARE(own->source, u"?a={utc}"_s);
        QCOMPARE(own->days, 2);
        QCOMPARE(own->correctionSeconds, 1800);

        // catchup wins over catchup-type; days default to five.
        const std::optional<CatchupSettings> both = CatchupAttributes::resolve(
            attributesOf(u"#EXTINF:-1 catchup-type=\"xc\" catchup=\"flussonic\",One"_s), {});
        QVERIFY(both);
        QCOMPARE(both->mode, CatchupMode::flussonic);
        QCOMPARE(both->days, 5);
    }

    void olderListsAnnounceShiftByDays()
    {
        const std::optional<CatchupSettings> timeshift
            = CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 timeshift=\"4\",One"_s), {});
        QVERIFY(timeshift);
        QCOMPARE(timeshift->mode, CatchupMode::shift);
        QCOMPARE(timeshift->days, 4);
        const std::optional<CatchupSettings> rec
            = CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 tvg-rec=\"3\",One"_s), {});
        QVERIFY(rec);
        QCOMPARE(rec->days, 3);
        QVERIFY(!CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 tvg-rec=\"0\",One"_s), {}));
        // The playlist's mode is not replaced by an entry's older form, nor the entry's by it.
        const CatchupAttributes header = attributesOf(u"#EXTM3U catchup=\"flussonic\""_s);
        QCOMPARE(
            CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 timeshift=\"2\",One"_s), header)
                ->mode,
            CatchupMode::shift);
    }

    void entriesWithoutAModeHaveNoArchive()
    {
        QVERIFY(!CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 tvg-id=\"a\",One"_s), {}));
        QVERIFY(!CatchupAttributes::resolve(
            attributesOf(u"#EXTINF:-1 catchup-source=\"http://a/{utc}\" catchup-days=\"3\",One"_s),
            {}));
        QVERIFY(
            !CatchupAttributes::resolve(attributesOf(u"#EXTINF:-1 catchup=\"later\",One"_s), {}));
        // Unreadable numbers are as absent.
        const std::optional<CatchupSettings> odd = CatchupAttributes::resolve(
            attributesOf(u"#EXTINF:-1 catchup=\"shift\" catchup-days=\"many\" "
                         "catchup-correction=\"48\",One"_s),
            {});
        QVERIFY(odd);
        QCOMPARE(odd->days, 5);
        QCOMPARE(odd->correctionSeconds, 0);
    }

    void aPlaylistGivesEachEntryItsArchive()
    {
        const QByteArray list = "\xEF\xBB\xBF#EXTM3U url-tvg=\"http://epg.example/g.xml\" "
                                "catchup=\"flussonic\" catchup-days=\"3\"\r\n"
                                "#EXTINF:-1 tvg-id=\"one\",One\r\nhttp://fs.example/one/mpegts\r\n"
                                "#EXTINF:-1 catchup=\"shift\" catchup-days=\"9\" "
                                "http-user-agent=\"Box/1\",Two\r\nhttp://tv.example/two.m3u8\r\n"
                                "#EXTINF:-1 catchup=\"none\",Three\r\nhttp://tv.example/three\r\n"
                                "http://tv.example/four\r\n";
        const QUrl base(u"http://lists.example/tv.m3u"_s);
        for (const QList<PlaylistEntry> &entries :
             {PlaylistParser::parse(QByteArrayView(list), base),
              PlaylistParser::parse(QString::fromUtf8(list), base)}) {
            QCOMPARE(entries.size(), 4);
            QVERIFY(entries[0].catchup());
            QCOMPARE(entries[0].catchup()->mode, CatchupMode::flussonic);
            QCOMPARE(entries[0].catchup()->days, 3);
            QVERIFY(entries[1].catchup());
            QCOMPARE(entries[1].catchup()->mode, CatchupMode::shift);
            QCOMPARE(entries[1].catchup()->days, 9);
            QCOMPARE(entries[1].headers().userAgent, u"Box/1"_s);
            QVERIFY(!entries[2].catchup());
            // An address without #EXTINF takes the playlist's.
            QVERIFY(entries[3].catchup());
            QCOMPARE(entries[3].catchup()->mode, CatchupMode::flussonic);
        }
    }

    void theWholeOfALargeListKnowsThePlaylistsMode()
    {
        // Large lists are read in parts at once: the last part has the header's defaults too.
        QByteArray list = "#EXTM3U catchup=\"xc\" catchup-days=\"2\"\n";
        for (int i = 0; list.size() < (3 << 20); ++i)
            list += "#EXTINF:-1,Channel " + QByteArray::number(i) + "\nhttp://xc.example/u/p/"
                + QByteArray::number(i) + ".ts\n";
        const QList<PlaylistEntry> entries
            = PlaylistParser::parse(QByteArrayView(list), QUrl(u"http://lists.example/"_s));
        QVERIFY(entries.size() > 50000);
        for (const qsizetype at : {qsizetype(0), entries.size() / 2, entries.size() - 1}) {
            QVERIFY(entries[at].catchup());
            QCOMPARE(entries[at].catchup()->mode, CatchupMode::xc);
            QCOMPARE(entries[at].catchup()->days, 2);
        }
    }
};

QTEST_GUILESS_MAIN(TestCatchupAddress)
#include "tst_catchupaddress.moc"
