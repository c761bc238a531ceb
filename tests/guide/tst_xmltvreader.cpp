// XMLTV guides read as their bytes come: channels, programmes and titles, and the real world's
// damage (cut-short files, bad entities, old encodings, long lines, no XML at all).
#include "guide/guidereaderthread.h"
#include "guide/xmltvreader.h"
#include "hostileguides.h"

#include <QTest>
#include <thread>

namespace {
const QByteArray guide
    = "<?xml version='1.0' encoding='UTF-8'?>\n"
      "<!DOCTYPE tv SYSTEM 'xmltv.dtd'>\n"
      "<tv generator-info-name='test'>\n"
      "  <channel id='bbc1.uk'>\n"
      "    <display-name lang='en'>BBC One</display-name>\n"
      "    <display-name>BBC 1</display-name>\n"
      "    <icon src='http://example.com/bbc1.png'/>\n"
      "  </channel>\n"
      "  <channel id='arte.fr'><display-name>Arte</display-name></channel>\n"
      "  <programme start='20241125180000 +0000' stop='20241125190000 +0000' channel='bbc1.uk'>\n"
      "    <title lang='en'>News &amp; Weather</title>\n"
      "    <title lang='fr'>Informations</title>\n"
      "    <desc>The news of the day.</desc>\n"
      "  </programme>\n"
      "  <programme start='20241125190000 +0000' channel='bbc1.uk'>\n"
      "    <title><![CDATA[Quiz <Night>]]></title>\n"
      "  </programme>\n"
      "  <programme start='yesterday' stop='20241125190000 +0000' channel='arte.fr'>\n"
      "    <title>Unreadable start</title>\n"
      "  </programme>\n"
      "  <programme start='20241125200000 +0100' stop='20241125210000 +0100' channel='arte.fr'>\n"
      "    <title>Documentaire</title>\n"
      "  </programme>\n"
      "  <programme start='20241125200000 +0000' stop='20241125210000 +0000' channel='nowhere'>\n"
      "    <title>News &amp; Weather</title>\n"
      "  </programme>\n"
      "</tv>\n";

QString title(const XmltvReader &reader, const QString &channel, int index)
{
    return QString::fromUtf8(
        reader.titles().at(int(reader.programmes().value(channel).at(index).title)));
}
} // namespace

class TestXmltvReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aGuideIsReadWhateverItsBlocks_data()
    {
        QTest::addColumn<int>("chunk");
        for (const int chunk : {1, 3, 64, 1 << 20})
            QTest::addRow("%d", chunk) << chunk;
    }

    void aGuideIsReadWhateverItsBlocks()
    {
        QFETCH(int, chunk);
        XmltvReader reader;
        {
            // As a download brings it: blocks of any size, which the reading thread hands to
            // libxml2 as it asks, across their edges.
            GuideReaderThread thread(reader);
            for (qsizetype at = 0; at < guide.size(); at += chunk)
                QVERIFY(
                    thread.push(guide.sliced(at, std::min<qsizetype>(chunk, guide.size() - at))));
            thread.finish();
        }
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorText()));
        QCOMPARE(reader.channels().size(), size_t(2));
        QCOMPARE(reader.channels()[0],
                 (GuideChannel {QStringLiteral("bbc1.uk"), {"BBC One", "BBC 1"}}));
        QCOMPARE(reader.channels()[1].displayNames, QStringList {"Arte"});
        // The first title, entities and CDATA decoded; a missing stop stays missing here.
        QCOMPARE(reader.programmes().value("bbc1.uk").size(), size_t(2));
        QCOMPARE(title(reader, "bbc1.uk", 0), QStringLiteral("News & Weather"));
        QCOMPARE(title(reader, "bbc1.uk", 1), QStringLiteral("Quiz <Night>"));
        QVERIFY(!reader.programmes().value("bbc1.uk").at(1).stop);
        // Read in UTC: 20:00 at +0100 is 19:00.
        const ReadProgramme documentary = reader.programmes().value("arte.fr").at(0);
        QCOMPARE(documentary.start, qint64(1732561200));
        QCOMPARE(reader.skippedProgrammes(), 1);
        // A channel the guide does not list still has its programmes read.
        QCOMPARE(reader.programmes().value("nowhere").size(), size_t(1));
        // One title kept once.
        QCOMPARE(reader.titles().count("News & Weather"), 1);
        QCOMPARE(reader.programmeCount(), 4);
    }

    void onlyTheChannelsAskedForAndTheWindowAreKept()
    {
        XmltvReader::Options options;
        std::vector<GuideChannel> asked;
        options.keepChannel = [&](const GuideChannel &channel) {
            asked.push_back(channel);
            return channel.id == u"bbc1.uk";
        };
        // 18:30 to 19:30: the first programme stops inside it; the second has no stop and
        // starts inside it.
        options.keepFrom = 1732559400;
        options.keepUntil = 1732563000;
        XmltvReader reader(std::move(options));
        reader.read(guide);
        QCOMPARE(asked.size(), size_t(2));
        QCOMPARE(reader.channels().size(), size_t(1));
        QCOMPARE(reader.programmes().keys(), QStringList {"bbc1.uk"});
        QCOMPARE(reader.programmes().value("bbc1.uk").size(), size_t(2));
    }

    void anArchivedChannelKeepsItsPastAndCatchupIds()
    {
        XmltvReader::Options options;
        options.keepArchive = [](const GuideChannel &channel) {
            return channel.id == u"a";
        };
        options.keepFrom = 1000;
        options.archiveFrom = 100;
        XmltvReader reader(std::move(options));
        reader.read(R"(<tv><channel id="a"/><channel id="b"/>
<programme channel="a" start="19700101000200 +0000" stop="19700101000300 +0000" catchup-id=" 42 "><title>A1</title></programme>
<programme channel="b" start="19700101000200 +0000" stop="19700101000300 +0000"><title>B1</title></programme>
<programme channel="a" start="19700101002000 +0000" stop="19700101003000 +0000"><title>A2</title></programme>
<programme channel="b" start="19700101002000 +0000" stop="19700101003000 +0000" catchup-id=""><title>B2</title></programme>
</tv>)");
        const std::vector<ReadProgramme> a = reader.programmes().value("a");
        const std::vector<ReadProgramme> b = reader.programmes().value("b");
        QCOMPARE(a.size(), size_t(2));
        QCOMPARE(b.size(), size_t(1));
        QVERIFY(a[0].catchupId != 0);
        QCOMPARE(reader.titles().value(qsizetype(a[0].catchupId - 1)), QByteArray("42"));
        QCOMPARE(a[1].catchupId, 0u);
        QCOMPARE(b[0].catchupId, 0u);
    }

    void aChannelIsKeptOnceTheFirstDeclarationWinning()
    {
        XmltvReader::Options options;
        int asked = 0;
        options.keepChannel = [&](const GuideChannel &) {
            return ++asked > 0;
        };
        XmltvReader reader(std::move(options));
        QByteArray document = "<tv><channel id=\"a\"><display-name>First</display-name></channel>";
        for (int i = 0; i < 1000; ++i)
            document += "<channel id=\"a\"><display-name>Again</display-name></channel>";
        reader.read(document + "</tv>");
        QCOMPARE(reader.channels().size(), size_t(1));
        QCOMPARE(reader.channels()[0].displayNames, QStringList {"First"});
        QCOMPARE(asked, 1);
    }

    void longTextsAreCutAtAThousandCharacters()
    {
        // Two-byte characters, and a four-byte one across the edge.
        const QByteArray name = QByteArray("\xc3\xa9").repeated(3000);
        const QByteArray title = QByteArray("  ") + QByteArray("t").repeated(999)
            + "\xf0\x9f\x93\xba" + QByteArray("u").repeated(1 << 20);
        XmltvReader reader;
        reader.read("<tv><channel id=\"a\"><display-name>" + name
                    + "</display-name></channel><programme start=\"20241125180000\" "
                      "channel=\"a\"><title>"
                    + title + "</title></programme></tv>");
        QCOMPARE(reader.channels().at(0).displayNames.at(0), QString(1000, u'\u00e9'));
        QCOMPARE(::title(reader, "a", 0),
                 QString(999, u't') + QString::fromUtf8("\xf0\x9f\x93\xba"));
    }

    void aGuideKeepsNoMoreThanItsLimits()
    {
        XmltvReader::Options options;
        options.maxKeptProgrammes = 3;
        XmltvReader reader(options);
        reader.read(guide);
        QCOMPARE(reader.programmeCount(), 3);
        QCOMPARE(reader.programmesOverLimit(), 1);
        options.maxKeptProgrammes = 100;
        options.maxTitleBytes = 20; // "News & Weather", then "Quiz <Night>" fills it
        XmltvReader titles(options);
        titles.read(guide);
        QCOMPARE(titles.programmeCount(), 2);
        QCOMPARE(titles.programmesOverLimit(), 2);
    }

    void oldEncodingsDeclaredInTheProlog_data()
    {
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Latin-1") << QByteArray("ISO-8859-1")
                                 << QByteArray("T\xe9l\xe9 Qu\xe9"
                                               "bec")
                                 << QStringLiteral("Télé Québec");
        QTest::newRow("Windows-1252")
            << QByteArray("windows-1252") << QByteArray("\x93Quoted\x94 \x80 5")
            << QStringLiteral("“Quoted” € 5");
    }

    void oldEncodingsDeclaredInTheProlog()
    {
        QFETCH(QByteArray, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        const QByteArray document = "<?xml version=\"1.0\" encoding=\"" + encoding
            + "\"?>\n<tv>"
              "<channel id=\"x\"><display-name>"
            + bytes + "</display-name></channel></tv>";
        XmltvReader reader;
        reader.read(document);
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorText()));
        QCOMPARE(reader.channels().at(0).displayNames, QStringList {expected});
    }

    void aCutShortGuideKeepsWhatCame()
    {
        const qsizetype cut = guide.indexOf("<programme start='20241125200000 +0100'") + 30;
        XmltvReader reader;
        reader.read(QByteArrayView(guide).first(cut));
        QVERIFY(reader.hasError());
        QCOMPARE(reader.channels().size(), size_t(2));
        QCOMPARE(reader.programmes().value("bbc1.uk").size(), size_t(2));
        QVERIFY(!reader.programmes().contains("arte.fr"));
    }

    void aBadEntityIsPassedOver()
    {
        XmltvReader reader;
        reader.read("<tv><channel id=\"a\"><display-name>Fish &chips; Co</display-name></channel>"
                    "<programme start=\"20241125180000\" stop=\"20241125190000\" channel=\"a\">"
                    "<title>After &nbsp; it</title></programme></tv>");
        QCOMPARE(reader.channels().size(), size_t(1));
        QCOMPARE(reader.programmes().value("a").size(), size_t(1));
    }

    void aGuidesOwnEntitiesAreNotExpanded()
    {
        // XML's five and character references are read; what the guide declares itself, inside
        // or outside, is not, in text or in attributes; nor is one never declared.
        XmltvReader reader;
        reader.read("<?xml version=\"1.0\"?>\n"
                    "<!DOCTYPE tv [\n<!ENTITY inner \"expanded\">\n"
                    "<!ENTITY outer SYSTEM \"file:///etc/hostname\">\n"
                    "<!ENTITY % param \"<!ENTITY sneaky 'param'>\">\n%param;\n"
                    "<!ENTITY % far SYSTEM \"file:///etc/hostname\">\n%far;\n]>\n"
                    "<tv><channel id=\"a&inner;\"><display-name>A&inner;</display-name></channel>"
                    "<programme start=\"20241125180000\" stop=\"20241125190000\" channel=\"a\">"
                    "<title>x &amp;&inner;&outer;&sneaky;&nbsp;y "
                    "&amp;&#233;&#x41;</title></programme></tv>");
        QCOMPARE(reader.channels().size(), size_t(1));
        QCOMPARE(reader.channels()[0], (GuideChannel {QStringLiteral("a"), {"A"}}));
        QCOMPARE(title(reader, "a", 0), QStringLiteral("x &y &\u00e9A"));
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorText()));
    }

    void entityBombsEndAndTheRestIsRead_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::newRow("10^7 nested") << HostileGuides::nestedEntities(7);
        QTest::newRow("10^9 nested") << HostileGuides::nestedEntities(9);
        QTest::newRow("quadratic") << HostileGuides::repeatedEntity(57'000, 11'000);
    }

    void entityBombsEndAndTheRestIsRead()
    {
        QFETCH(QByteArray, document);
        XmltvReader reader;
        reader.read(document);
        const auto &programmes = reader.programmes().value("a");
        QCOMPARE(programmes.size(), size_t(3));
        QCOMPARE(title(reader, "a", 0), QStringLiteral("Before"));
        QVERIFY2(title(reader, "a", 1).size() < 20, qPrintable(title(reader, "a", 1).left(40)));
        QCOMPARE(title(reader, "a", 2), QStringLiteral("After"));
    }

    void aReadEndsWhenAskedToStop()
    {
        // A guide without end, as a server may send it; the owner gives up on it from another
        // thread.
        auto stop = std::make_shared<std::atomic<bool>>(false);
        XmltvReader::Options options;
        options.stop = stop;
        XmltvReader reader(std::move(options));
        const QByteArray programme = "<programme start=\"20241125180000\" channel=\"a\">"
                                     "<title>Again</title></programme>";
        std::atomic<qint64> given = 0;
        std::thread stopper([&] {
            while (given.load() < 1'000'000)
                std::this_thread::yield();
            stop->store(true);
        });
        qsizetype at = 0;
        reader.read([&](char *buffer, qsizetype size) {
            for (qsizetype i = 0; i < size; ++i, ++at)
                buffer[i] = at < 4 ? "<tv>"[at] : programme[(at - 4) % programme.size()];
            given += size;
            return size;
        });
        stopper.join();
        QVERIFY(reader.programmeCount() > 1000);
    }

    void aVeryLongLineIsRead()
    {
        QByteArray line = "<tv>";
        for (int i = 0; i < 15000; ++i)
            line += "<programme start=\"20241125180000\" stop=\"20241125190000\" channel=\"c"
                + QByteArray::number(i % 50) + "\"><title>Programme number " + QByteArray::number(i)
                + "</title></programme>";
        line += "</tv>";
        QVERIFY(line.size() > 1'500'000 && !line.contains('\n'));
        XmltvReader reader;
        reader.read(line);
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorText()));
        QCOMPARE(reader.programmeCount(), 15000);
    }

    void somethingThatIsNotXmlIsAnError()
    {
        for (const QByteArray &bytes :
             {QByteArray("#EXTM3U\n#EXTINF:-1,Not a guide\nhttp://example.com/\n"),
              QByteArray("\x89PNG\r\n\x1a\n\0\0\0", 11), QByteArray()}) {
            XmltvReader reader;
            reader.read(bytes);
            QVERIFY(reader.hasError());
            QVERIFY(reader.channels().empty());
            QCOMPARE(reader.programmeCount(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestXmltvReader)
#include "tst_xmltvreader.moc"
