// What a playlist tells the programme guide: the guides and tvg-shift of its #EXTM3U line, and
// each entry's tvg-id, tvg-name and tvg-shift.
#include "sources/playlistheader.h"
#include "sources/playlistparser.h"
#include "sources/tvgshift.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QUrl base(QStringLiteral("http://lists.example/tv/index.m3u"));

QList<PlaylistEntry> parse(const QByteArray &bytes)
{
    return PlaylistParser::parse(QByteArrayView(bytes), base);
}

} // namespace

class TestPlaylistGuideKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shiftsAreHoursWithinTheirRange()
    {
        QCOMPARE(TvgShift::parseSeconds(u"2"), 7200);
        QCOMPARE(TvgShift::parseSeconds(u"-1.5"), -5400);
        QCOMPARE(TvgShift::parseSeconds(u"+0.25"), 900);
        QCOMPARE(TvgShift::parseSeconds(u" 14 "), 14 * 3600);
        QCOMPARE(TvgShift::parseSeconds(u"-12"), -12 * 3600);
        QVERIFY(!TvgShift::parseSeconds(u"14.5"));
        QVERIFY(!TvgShift::parseSeconds(u"-13"));
        QVERIFY(!TvgShift::parseSeconds(u"two"));
        QVERIFY(!TvgShift::parseSeconds(u""));
        QVERIFY(!TvgShift::parseSeconds(u"nan"));
        QVERIFY(!TvgShift::parseSeconds(u"inf"));
    }

    void headerNamesItsGuidesInOrder()
    {
        const PlaylistHeader header = PlaylistHeader::read(
            "\xEF\xBB\xBF#EXTM3U x-tvg-url=\"http://epg.example/a.xml.gz, guides/b.xml,"
            "http://epg.example/a.xml.gz\" url-tvg=\"https://[2001:db8::1]:8443/c.xml\" "
            "tvg-shift=\"-2.5\"\r\n#EXTINF:-1,One\r\nhttp://h/one\r\n",
            base);
        QCOMPARE(header.guides,
                 (QList<QUrl> {QUrl(u"http://epg.example/a.xml.gz"_s),
                               QUrl(u"http://lists.example/tv/guides/b.xml"_s),
                               QUrl(u"https://[2001:db8::1]:8443/c.xml"_s)}));
        QCOMPARE(header.shiftSeconds, -9000);
    }

    void aHeaderKnowsWhetherItsPlaylistIsLocal()
    {
        const QByteArray bytes = "#EXTM3U x-tvg-url=\"FILE:///etc/guide.xml\"\n";
        const PlaylistHeader network = PlaylistHeader::read(bytes, base);
        QCOMPARE(network.guides, QList<QUrl> {QUrl::fromLocalFile(u"/etc/guide.xml"_s)});
        QVERIFY(!network.fromLocalFile);
        QVERIFY(PlaylistHeader::read(bytes, QUrl::fromLocalFile(u"/srv/tv.m3u"_s)).fromLocalFile);
    }

    void headerWithoutGuidesOrNotFirst()
    {
        QCOMPARE(PlaylistHeader::read("#EXTM3U\n#EXTINF:-1,One\nhttp://h/one\n", base),
                 PlaylistHeader());
        // Only the first line that is not blank is the header.
        const PlaylistHeader later = PlaylistHeader::read(
            "\r\n\r\n#EXTINF:-1,One\nhttp://h/one\n#EXTM3U x-tvg-url=\"http://e/g.xml\"\n", base);
        QVERIFY(later.guides.isEmpty());
        const PlaylistHeader blankFirst
            = PlaylistHeader::read("\n  \n#EXTM3U url-tvg=\"http://e/g.xml\"\n", base);
        QCOMPARE(blankFirst.guides, QList<QUrl> {QUrl(u"http://e/g.xml"_s)});
        // An empty list, a shift out of range.
        const PlaylistHeader empty
            = PlaylistHeader::read("#EXTM3U x-tvg-url=\" , \" tvg-shift=\"20\"\n", base);
        QVERIFY(empty.guides.isEmpty());
        QVERIFY(!empty.shiftSeconds);
        QCOMPARE(PlaylistHeader::read("", base), PlaylistHeader());
    }

    void entriesKeepTheirGuideKeys()
    {
        const QList<PlaylistEntry> entries
            = parse("#EXTM3U\n"
                    "#EXTINF:-1 tvg-id=\"News.uk\" tvg-name=\"BBC_News\" tvg-shift=\"1.5\",BBC "
                    "News HD\nhttp://h/1\n"
                    "#EXTINF:-1 tvg-id=\"Sport.de\" tvg-name=\"Sport\",Sport\nhttp://h/2\n"
                    "#EXTINF:-1 tvg-name=\"Named only\",\nhttp://h/3\n"
                    "#EXTINF:-1 tvg-shift=\"99\",Plain\nhttp://h/4\n");
        QCOMPARE(entries.size(), 4);
        QCOMPARE(entries[0].tvgId(), u"News.uk");
        QCOMPARE(entries[0].tvgName(), u"BBC_News");
        QCOMPARE(entries[0].tvgShiftSeconds(), 5400);
        QCOMPARE(entries[0].name(), u"BBC News HD");
        QCOMPARE(entries[0].countryCode(), u"UK"_s);
        QCOMPARE(entries[0].url(), QUrl(u"http://h/1"_s));
        QCOMPARE(entries[1].tvgId(), u"Sport.de");
        QCOMPARE(entries[1].tvgName(), u"Sport"); // the same text as the name
        QVERIFY(!entries[1].tvgShiftSeconds());
        QVERIFY(entries[2].tvgId().isEmpty());
        QCOMPARE(entries[2].tvgName(), u"Named only");
        QCOMPARE(entries[2].name(), u"Named only");
        QVERIFY(entries[3].tvgName().isEmpty());
        QVERIFY(!entries[3].tvgShiftSeconds()); // out of range: none
        QCOMPARE(entries[3].url(), QUrl(u"http://h/4"_s));
        // The keys take part in equality, as the other fields do.
        QVERIFY(entries[0]
                != PlaylistEntry::fromEncoded(
                    entries[0].id(), entries[0].nameView(), entries[0].encodedUrl(), {},
                    std::make_shared<const PlaylistLabels>(PlaylistLabels {u"News"_s, u"UK"_s})));
    }

    void anOverlongKeyCountsAsNone()
    {
        const QByteArray longId(40000, 'x');
        const QList<PlaylistEntry> entries
            = parse("#EXTM3U\n#EXTINF:-1 tvg-id=\"" + longId + "\" tvg-name=\"" + longId
                    + "\",News\nhttp://h/1\n");
        QCOMPARE(entries.size(), 1);
        QVERIFY(entries[0].tvgId().isEmpty());
        QVERIFY(entries[0].tvgName().isEmpty());
        QCOMPARE(entries[0].name(), u"News"_s);
        QCOMPARE(entries[0].url(), QUrl(u"http://h/1"_s));
    }
};

QTEST_GUILESS_MAIN(TestPlaylistGuideKeys)
#include "tst_playlistguidekeys.moc"
