#include "sources/lastplayablesource.h"
#include "sources/urlparts.h"
#include "sources/youtubecontent.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

class TestYouTubeContent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recognition_data();
    void recognition();
    void idJoinsBothIdentifiers();
    void equalityAndHashingTakeBothFields();
    void neverBuiltEmpty();
    void lastPlayableSourceCases();
};

void TestYouTubeContent::recognition_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<std::optional<QString>>("videoID");
    QTest::addColumn<std::optional<QString>>("playlistID");
    const std::optional<QString> none;
    const auto some = [](const char *text) {
        return std::optional<QString>(QString::fromUtf8(text));
    };

    QTest::newRow("watch with v and list")
        << "https://www.youtube.com/watch?v=abc&list=PLx" << some("abc") << some("PLx");
    QTest::newRow("watch with list only")
        << "https://www.youtube.com/watch?list=PLx" << none << some("PLx");
    QTest::newRow("watch v of encoded blanks")
        << "https://www.youtube.com/watch?v=%20%20" << none << none;
    QTest::newRow("watch v trimmed")
        << "https://www.youtube.com/watch?v=%20abc%20" << some("abc") << none;
    QTest::newRow("watch v without value")
        << "https://www.youtube.com/watch?v&list=L" << none << some("L");
    QTest::newRow("first v wins") << "https://youtube.com/watch?v=one&v=two" << some("one") << none;
    QTest::newRow("first list wins, even empty")
        << "https://youtube.com/watch?v=a&list=&list=L" << some("a") << none;
    QTest::newRow("short link") << "https://youtu.be/abc123" << some("abc123") << none;
    QTest::newRow("short link with list")
        << "https://youtu.be/abc123?list=PL1" << some("abc123") << some("PL1");
    QTest::newRow("short link empty path") << "https://youtu.be" << none << none;
    QTest::newRow("short link root path") << "https://youtu.be/" << none << none;
    QTest::newRow("short link empty path with list")
        << "https://youtu.be/?list=PL1" << none << some("PL1");
    QTest::newRow("shorts") << "https://www.youtube.com/shorts/ID1" << some("ID1") << none;
    QTest::newRow("embed") << "https://www.youtube.com/embed/ID2?list=L" << some("ID2")
                           << some("L");
    QTest::newRow("live") << "https://m.youtube.com/live/ID3" << some("ID3") << none;
    QTest::newRow("channel live") << "https://www.youtube.com/channel/x/live/ID4" << some("ID4")
                                  << none;
    QTest::newRow("embed as last component") << "https://www.youtube.com/embed" << none << none;
    QTest::newRow("embed as last component with list")
        << "https://www.youtube.com/embed/?list=L" << none << some("L");
    QTest::newRow("privacy-enhanced domain")
        << "https://www.youtube-nocookie.com/embed/ID5" << some("ID5") << none;
    QTest::newRow("bare privacy-enhanced domain")
        << "https://youtube-nocookie.com/embed/ID6" << some("ID6") << none;
    QTest::newRow("host in capitals")
        << "https://WWW.YOUTUBE.COM/watch?v=abc" << some("abc") << none;
    QTest::newRow("short link host in capitals") << "https://YOUTU.BE/abc" << some("abc") << none;
    QTest::newRow("Watch in capitals is not the watch page")
        << "https://www.youtube.com/Watch?v=abc" << none << none;
    QTest::newRow("V in capitals is not v")
        << "https://www.youtube.com/watch?V=abc" << none << none;
    QTest::newRow("LIST in capitals is not list")
        << "https://www.youtube.com/watch?v=a&LIST=L" << some("a") << none;
    QTest::newRow("Embed in capitals is not embed")
        << "https://www.youtube.com/Embed/ID" << none << none;
    QTest::newRow("watch with trailing slash")
        << "https://www.youtube.com/watch/?v=abc" << none << none;
    QTest::newRow("look-alike domain") << "https://notyoutube.com/watch?v=abc" << none << none;
    QTest::newRow("look-alike suffix")
        << "https://youtube.com.evil.example/watch?v=abc" << none << none;
    QTest::newRow("subdomain of short link not accepted")
        << "https://www.youtu.be/abc" << none << none;
    QTest::newRow("other site") << "https://vimeo.com/123" << none << none;
    QTest::newRow("no host") << "file:///watch?v=abc" << none << none;
    QTest::newRow("identifier characters not checked")
        << "https://youtu.be/a!b" << some("a!b") << none;
}

void TestYouTubeContent::recognition()
{
    QFETCH(QString, address);
    QFETCH(std::optional<QString>, videoID);
    QFETCH(std::optional<QString>, playlistID);
    const std::optional<QUrl> url = UrlParts::parse(address);
    QVERIFY(url);
    const std::optional<YouTubeContent> content = YouTubeContent::fromUrl(*url);
    if (!videoID && !playlistID) {
        QVERIFY(!content);
        return;
    }
    QVERIFY(content);
    QCOMPARE(content->videoID(), videoID);
    QCOMPARE(content->playlistID(), playlistID);
}

void TestYouTubeContent::idJoinsBothIdentifiers()
{
    QCOMPARE(YouTubeContent::make(u"abc"_s, std::nullopt)->id(), u"abc|"_s);
    QCOMPARE(YouTubeContent::make(std::nullopt, u"PLx"_s)->id(), u"|PLx"_s);
    QCOMPARE(YouTubeContent::make(u"abc"_s, u"PLx"_s)->id(), u"abc|PLx"_s);
    const auto listOnly
        = YouTubeContent::fromUrl(QUrl(u"https://www.youtube.com/watch?list=PLx"_s));
    QCOMPARE(listOnly->id(), u"|PLx"_s);
}

void TestYouTubeContent::equalityAndHashingTakeBothFields()
{
    const YouTubeContent a = *YouTubeContent::make(u"v"_s, u"p"_s);
    const YouTubeContent same = *YouTubeContent::make(u"v"_s, u"p"_s);
    const YouTubeContent otherList = *YouTubeContent::make(u"v"_s, u"q"_s);
    const YouTubeContent videoOnly = *YouTubeContent::make(u"v"_s, std::nullopt);
    QCOMPARE(a, same);
    QCOMPARE(qHash(a, 0), qHash(same, 0));
    QVERIFY(a != otherList);
    QVERIFY(a != videoOnly);
    // Absent and present-but-different identifiers hash apart.
    const YouTubeContent swapped = *YouTubeContent::make(u"p"_s, u"v"_s);
    QVERIFY(a != swapped);
    const QSet<YouTubeContent> set {a, same, otherList, videoOnly, swapped};
    QCOMPARE(set.size(), 4);
}

void TestYouTubeContent::neverBuiltEmpty()
{
    QVERIFY(!YouTubeContent::make(std::nullopt, std::nullopt));
    QVERIFY(!YouTubeContent::make(u""_s, u""_s));
    QCOMPARE(YouTubeContent::make(u""_s, u"L"_s)->videoID(), std::nullopt);
}

void TestYouTubeContent::lastPlayableSourceCases()
{
    const LastPlayableSource media
        = LastPlayableMedia {QUrl(u"file:///tmp/a.mp4"_s), u"a.mp4"_s, false};
    const LastPlayableSource video
        = LastPlayableYouTube {*YouTubeContent::make(u"abc"_s, std::nullopt), u"Clip"_s};
    QVERIFY(std::holds_alternative<LastPlayableMedia>(media));
    QVERIFY(std::holds_alternative<LastPlayableYouTube>(video));
    QCOMPARE(std::get<LastPlayableYouTube>(video).content.id(), u"abc|"_s);
    QVERIFY(media != video);
    QVERIFY(
        media
        == LastPlayableSource(LastPlayableMedia {QUrl(u"file:///tmp/a.mp4"_s), u"a.mp4"_s, false}));
    QVERIFY(
        media
        != LastPlayableSource(LastPlayableMedia {QUrl(u"file:///tmp/a.mp4"_s), u"a.mp4"_s, true}));
}

QTEST_GUILESS_MAIN(TestYouTubeContent)
#include "tst_youtubecontent.moc"
