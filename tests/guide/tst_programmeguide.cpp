// A playlist's programmes merged from its guides: matching, merging, shifts, the kept window,
// and the moments at which now and next change.
#include "guide/guidewants.h"
#include "guide/programmeguide.h"
#include "guide/xmltvreader.h"
#include "sources/playlistparser.h"

#include <QTest>
#include <QTimeZone>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

// 2026-11-25 20:00:00 UTC
constexpr qint64 evening = 1795636800;

GuideRead read(const QByteArray &xml)
{
    XmltvReader reader;
    reader.read(xml);
    return {reader.channels(), reader.programmes(), reader.titles()};
}

QList<PlaylistEntry> playlist(const QByteArray &m3u)
{
    return PlaylistParser::parse(QByteArrayView(m3u), QUrl(u"http://lists.example/tv.m3u"_s));
}

QString nowTitle(const ProgrammeGuide &guide, qsizetype entry, qint64 moment)
{
    const ProgrammeGuide::NowNext found = guide.at(entry, moment);
    return found.now ? found.now->title : QString();
}

const QByteArray first = R"(<?xml version="1.0" encoding="UTF-8"?>
<tv>
  <channel id="news.uk"><display-name>BBC News</display-name></channel>
  <channel id="sport.de"><display-name>Sport Eins</display-name></channel>
  <programme channel="news.uk" start="20261125190000 +0000" stop="20261125200000 +0000"><title>Seven</title></programme>
  <programme channel="news.uk" start="20261125200000 +0000" stop="20261125210000 +0000"><title>News at Eight</title></programme>
  <programme channel="news.uk" start="20261125210000 +0000" stop="20261125220000 +0000"><title>Nine</title></programme>
  <programme channel="sport.de" start="20261125203000 +0100"><title>Bundesliga</title></programme>
  <programme channel="sport.de" start="20261125230000 +0100" stop="20261126000000 +0100"><title>Late</title></programme>
</tv>
)";

const QByteArray second = R"(<?xml version="1.0" encoding="UTF-8"?>
<tv>
  <channel id="news.uk"><display-name>Other name</display-name></channel>
  <channel id="film.fr"><display-name>Cine Plus</display-name></channel>
  <programme channel="news.uk" start="20261125200000 +0000" stop="20261125203000 +0000"><title>Loses to the first guide</title></programme>
  <programme channel="news.uk" start="20261125220000 +0000" stop="20261125230000 +0000"><title>Ten</title></programme>
  <programme channel="film.fr" start="20261125200000 +0000" stop="20261125220000 +0000"><title>News at Eight</title></programme>
</tv>
)";

} // namespace

class TestProgrammeGuide : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The start of the local day is that of UTC.
    void initTestCase()
    {
        qputenv("TZ", "UTC");
        tzset();
    }

    void guidesAreMergedFirstGuideFirst()
    {
        const QList<PlaylistEntry> entries
            = playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"news.uk\",News\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-id=\"FILM.FR\",Films\nhttp://h/2\n"
                       // A tvg-id that matches nothing lets the name match.
                       "#EXTINF:-1 tvg-id=\"missing\",cine plus\nhttp://h/3\n"
                       "#EXTINF:-1,Nothing\nhttp://h/4\n");
        const ProgrammeGuide guide({read(first), read(second)}, entries, std::nullopt, evening);
        QCOMPARE(guide.matchedEntries(), 3);
        const ProgrammeGuide::NowNext news = guide.at(0, evening + 600);
        QVERIFY(news.now);
        QCOMPARE(news.now->title, u"News at Eight"_s);
        QCOMPARE(news.now->start, evening);
        QCOMPARE(news.now->stop, evening + 3600);
        QCOMPARE(news.next->title, u"Nine"_s);
        // The second guide's programmes of the same channel fill in after the first's.
        QCOMPARE(nowTitle(guide, 0, evening + 2 * 3600 + 60), u"Ten"_s);
        QCOMPARE(nowTitle(guide, 1, evening + 60), u"News at Eight"_s);
        QCOMPARE(nowTitle(guide, 2, evening + 60), u"News at Eight"_s);
        QCOMPARE(guide.at(3, evening), ProgrammeGuide::NowNext());
        QCOMPARE(guide.at(99, evening), ProgrammeGuide::NowNext());
    }

    void displayNamesOfTheFirstGuideCount()
    {
        // "Other name" is the second guide's name for a channel the first guide names too.
        const QList<PlaylistEntry> entries
            = playlist("#EXTM3U\n#EXTINF:-1 tvg-name=\"Other_name\",x\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-name=\"BBC_News\",x\nhttp://h/2\n");
        const ProgrammeGuide guide({read(first), read(second)}, entries, std::nullopt, evening);
        QCOMPARE(guide.at(0, evening), ProgrammeGuide::NowNext());
        QCOMPARE(nowTitle(guide, 1, evening), u"News at Eight"_s);
    }

    void shiftsMoveTheGuideLater()
    {
        const QList<PlaylistEntry> entries
            = playlist("#EXTM3U tvg-shift=\"1\"\n#EXTINF:-1 tvg-id=\"news.uk\",A\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-id=\"news.uk\" tvg-shift=\"-0.5\",B\nhttp://h/2\n");
        const ProgrammeGuide guide({read(first)}, entries, 3600, evening);
        // Seven moved to 20:00–21:00.
        const ProgrammeGuide::NowNext a = guide.at(0, evening + 60);
        QCOMPARE(a.now->title, u"Seven"_s);
        QCOMPARE(a.now->start, evening);
        QCOMPARE(a.next->start, evening + 3600);
        // News at Eight moved to 19:30–20:30.
        const ProgrammeGuide::NowNext b = guide.at(1, evening + 60);
        QCOMPARE(b.now->title, u"News at Eight"_s);
        QCOMPARE(b.now->start, evening - 1800);
    }

    void aMissingStopEndsAtTheNextStart()
    {
        const QList<PlaylistEntry> entries
            = playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"sport.de\",Sport\nhttp://h/1\n");
        const ProgrammeGuide guide({read(first)}, entries, std::nullopt, evening);
        const ProgrammeGuide::NowNext sport = guide.at(0, evening);
        QCOMPARE(sport.now->title, u"Bundesliga"_s);
        QCOMPARE(sport.now->start, evening - 1800);
        QCOMPARE(sport.now->stop, evening + 2 * 3600);
        QCOMPARE(sport.next->title, u"Late"_s);
    }

    void onlyTheWindowAroundTheMomentIsKept()
    {
        QByteArray xml = "<tv><channel id=\"c\"><display-name>C</display-name></channel>";
        // One programme an hour for four days, starting two days before the moment.
        const QDateTime from = QDateTime::fromSecsSinceEpoch(evening - 48 * 3600, QTimeZone::utc());
        for (int hour = 0; hour < 96; ++hour) {
            const QDateTime start = from.addSecs(hour * 3600);
            xml += "<programme channel=\"c\" start=\""
                + start.toString(u"yyyyMMddHHmmss"_s).toLatin1() + " +0000\" stop=\""
                + start.addSecs(3600).toString(u"yyyyMMddHHmmss"_s).toLatin1() + " +0000\"><title>P"
                + QByteArray::number(hour) + "</title></programme>";
        }
        xml += "</tv>";
        const ProgrammeGuide guide({read(xml)},
                                   playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"c\",C\nhttp://h/1\n"),
                                   std::nullopt, evening);
        // Stops from the start of today (UTC here) to 20:00 the day after tomorrow, both
        // included: P27, 23:00 to midnight, to P95.
        QCOMPARE(guide.programmeCount(), 69);
        QVERIFY(nowTitle(guide, 0, evening - 21 * 3600 - 1).isEmpty());
        QCOMPARE(nowTitle(guide, 0, evening - 21 * 3600), u"P27"_s);
        QCOMPARE(nowTitle(guide, 0, evening - 2 * 3600 + 1), u"P46"_s);
        QCOMPARE(nowTitle(guide, 0, evening + 47 * 3600 + 1), u"P95"_s);
        QCOMPARE(guide.nextChange(evening + 1), evening + 3600);
        QCOMPARE(guide.nextChange(evening + 48 * 3600), std::nullopt);
    }

    void aChannelWithAnArchiveKeepsItsWindow()
    {
        // One programme an hour on two channels, from four days before the moment to two after.
        QByteArray xml = "<tv><channel id=\"c\"><display-name>C</display-name></channel>"
                         "<channel id=\"d\"><display-name>D</display-name></channel>";
        const QDateTime from = QDateTime::fromSecsSinceEpoch(evening - 96 * 3600, QTimeZone::utc());
        for (const QByteArray channel : {"c", "d"}) {
            for (int hour = 0; hour < 144; ++hour) {
                const QDateTime start = from.addSecs(hour * 3600);
                xml += "<programme channel=\"" + channel + "\" catchup-id=\"" + channel
                    + QByteArray::number(hour) + "\" start=\""
                    + start.toString(u"yyyyMMddHHmmss"_s).toLatin1() + " +0000\" stop=\""
                    + start.addSecs(3600).toString(u"yyyyMMddHHmmss"_s).toLatin1()
                    + " +0000\"><title>P" + QByteArray::number(hour) + "</title></programme>";
            }
        }
        xml += "</tv>";
        const ProgrammeGuide guide(
            {read(xml)},
            playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"c\" catchup=\"shift\" catchup-days=\"3\",C\n"
                     "http://h/1\n#EXTINF:-1 tvg-id=\"d\",D\nhttp://h/2\n"),
            std::nullopt, evening);
        // C: stops from three days back, P23 on; D: from the start of today, P75 on.
        const QList<ProgrammeGuide::Programme> archived = guide.programmes(0);
        QCOMPARE(archived.size(), 121);
        QCOMPARE(archived.first().title, u"P23"_s);
        QCOMPARE(archived.first().start, evening - 73 * 3600);
        QCOMPARE(archived.first().catchupId, u"c23"_s);
        QCOMPARE(archived.last().title, u"P143"_s);
        const QList<ProgrammeGuide::Programme> today = guide.programmes(1);
        QCOMPARE(today.size(), 69);
        QCOMPARE(today.first().title, u"P75"_s);
        QCOMPARE(guide.programmeCount(), 121 + 69);
        QVERIFY(guide.programmes(2).isEmpty());
        QVERIFY(guide.programmes(-1).isEmpty());
        // What ended before the last two hours sets off no change.
        QCOMPARE(guide.nextChange(evening - 70 * 3600), std::optional<qint64>(evening - 3 * 3600));
    }

    void changesCoverEveryShiftedBoundary()
    {
        const QList<PlaylistEntry> entries
            = playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"news.uk\",A\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-id=\"news.uk\" tvg-shift=\"0.25\",B\nhttp://h/2\n");
        const ProgrammeGuide guide({read(first)}, entries, std::nullopt, evening);
        QCOMPARE(guide.nextChange(evening - 1), evening);
        QCOMPARE(guide.nextChange(evening), evening + 900);
        QCOMPARE(guide.nextChange(evening + 900), evening + 3600);
        QVERIFY(!ProgrammeGuide().nextChange(evening));
        QVERIFY(ProgrammeGuide().isEmpty());
    }

    void overlappingProgrammesAndUnknownChannels()
    {
        const QByteArray xml
            = "<tv><channel id=\"c\"><display-name>C</display-name></channel>"
              "<programme channel=\"c\" start=\"20261125200000\" stop=\"20261125213000\">"
              "<title>Long</title></programme>"
              "<programme channel=\"c\" start=\"20261125210000\" stop=\"20261125220000\">"
              "<title>Overlaps</title></programme>"
              "<programme channel=\"c\" start=\"20261125220000\" stop=\"20261125230000\">"
              "<title>Late</title></programme>"
              "<programme channel=\"nobody\" start=\"20261125200000\" stop=\"20261125230000\">"
              "<title>Unknown</title></programme></tv>";
        const ProgrammeGuide guide({read(xml)},
                                   playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"c\",C\nhttp://h/1\n"
                                            "#EXTINF:-1 tvg-id=\"nobody\",N\nhttp://h/2\n"),
                                   std::nullopt, evening);
        // The latest start that has not stopped; next starts at or after its stop.
        const ProgrammeGuide::NowNext overlap = guide.at(0, evening + 3600 + 900);
        QCOMPARE(overlap.now->title, u"Overlaps"_s);
        QCOMPARE(overlap.next->title, u"Late"_s);
        QCOMPARE(guide.at(0, evening + 600).now->title, u"Long"_s);
        QCOMPARE(guide.at(0, evening + 600).next->title, u"Late"_s);
        // Programmes of a channel the guide never names belong to no channel, and are passed over.
        QVERIFY(nowTitle(guide, 1, evening).isEmpty());
        QCOMPARE(guide.matchedEntries(), 1);
    }

    void wantedChannelsAreThoseAnyRuleCouldPick()
    {
        const GuideWants wants(playlist("#EXTM3U\n#EXTINF:-1 tvg-id=\"NEWS.UK\",x\nhttp://h/1\n"
                                        "#EXTINF:-1 tvg-name=\"Sport_Eins\",y\nhttp://h/2\n"
                                        "#EXTINF:-1,cine PLUS\nhttp://h/3\n"));
        const GuideRead one = read(first);
        const GuideRead two = read(second);
        QCOMPARE(wants.wanted(one.channels), (QSet<QString> {u"news.uk"_s, u"sport.de"_s}));
        QCOMPARE(wants.wanted(two.channels), (QSet<QString> {u"news.uk"_s, u"film.fr"_s}));
        QVERIFY(GuideWants().wanted(one.channels).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestProgrammeGuide)
#include "tst_programmeguide.moc"
