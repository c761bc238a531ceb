#include "sources/sourceaddress.h"
#include "sources/urlparts.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace SourceAddress;

Q_DECLARE_METATYPE(SourceAddress::SourceKind)

class TestSourceAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalizedRemoteAddress_data();
    void normalizedRemoteAddress();
    void isIPTVPlaylistURL_data();
    void isIPTVPlaylistURL();
    void classify_data();
    void classify();
    void invalidAddressMessageText();
    void channelAddresses_data();
    void channelAddresses();
};

void TestSourceAddress::normalizedRemoteAddress_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("normalized");
    QTest::newRow("blanks and angle brackets") << "  <https://host/x.m3u>  "
                                               << "https://host/x.m3u";
    QTest::newRow("two-character angle brackets kept") << "<>"
                                                       << "<>";
    QTest::newRow("three characters unwrapped") << "<a>"
                                                << "a";
    QTest::newRow("markdown link") << "[News](http://a/b.m3u8)"
                                   << "http://a/b.m3u8";
    QTest::newRow("markdown without closing parenthesis") << "[a](b"
                                                          << "[a](b";
    QTest::newRow("markdown first ]( wins") << "[a](b](c)"
                                            << "b](c";
    QTest::newRow("markdown then angle brackets") << "[x](<http://a/b>)"
                                                  << "http://a/b";
    QTest::newRow("markdown inner blanks trimmed") << "[x]( http://a/b )"
                                                   << "http://a/b";
    QTest::newRow("markdown empty target") << "[a]()"
                                           << "";
    QTest::newRow("newlines and tabs") << "\n\t http://a/b \r\n"
                                       << "http://a/b";
    QTest::newRow("non-breaking and ideographic spaces")
        << u"\u00A0http://a/b\u3000"_s << "http://a/b";
    QTest::newRow("no scheme added") << "example.com/live.m3u8"
                                     << "example.com/live.m3u8";
    QTest::newRow("markdown is case-sensitive text") << "[a] (b)"
                                                     << "[a] (b)";
    QTest::newRow("empty") << ""
                           << "";
}

void TestSourceAddress::normalizedRemoteAddress()
{
    QFETCH(QString, text);
    QFETCH(QString, normalized);
    QCOMPARE(SourceAddress::normalizedRemoteAddress(text), normalized);
}

void TestSourceAddress::isIPTVPlaylistURL_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("playlist");
    QTest::newRow("m3u") << "http://h/list.m3u" << true;
    QTest::newRow("M3U upper case") << "http://h/list.M3U" << true;
    QTest::newRow("m3u8 is a stream") << "http://h/live.m3u8" << false;
    QTest::newRow("type=m3u_plus")
        << "http://h/get.php?username=a&password=b&type=m3u_plus" << true;
    QTest::newRow("output=m3u8") << "http://h/get.php?username=a&output=m3u8" << true;
    QTest::newRow("format=m3u") << "http://h/api?format=m3u" << true;
    QTest::newRow("TYPE=M3U upper case") << "http://h/x?TYPE=M3U" << true;
    QTest::newRow("marker inside a longer name") << "http://h/x?filetype=m3u" << true;
    QTest::newRow("name without value") << "http://h/x?type" << false;
    QTest::newRow("encoded = inside the name") << "http://h/x?type%3Dm3u" << true;
    QTest::newRow("other query") << "http://h/x?type=json" << false;
    QTest::newRow("marker in the path only") << "http://h/type=m3u/x" << false;
    QTest::newRow("plain stream") << "http://h/video.mp4" << false;
    QTest::newRow("m3u behind trailing slash") << "http://h/list.m3u/" << true;
    QTest::newRow("m3u on an IPv6 host") << "http://[::1]:8080/list.m3u" << true;
}

void TestSourceAddress::isIPTVPlaylistURL()
{
    QFETCH(QString, address);
    QFETCH(bool, playlist);
    const std::optional<QUrl> url = UrlParts::parse(address);
    QVERIFY(url);
    QCOMPARE(SourceAddress::isIPTVPlaylistURL(*url), playlist);
}

void TestSourceAddress::classify_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SourceKind>("kind");
    QTest::addColumn<bool>("live");
    QTest::newRow("empty") << "" << SourceKind::invalid << false;
    QTest::newRow("no scheme") << "example.com/live.m3u8" << SourceKind::invalid << false;
    QTest::newRow("ftp") << "ftp://h/x.ts" << SourceKind::invalid << false;
    QTest::newRow("file") << "file:///tmp/x.mp4" << SourceKind::invalid << false;
    QTest::newRow("bad host") << "http://bad host/x.ts" << SourceKind::invalid << false;
    QTest::newRow("scheme in capitals") << "HTTPS://h/x.mp4" << SourceKind::stream << false;
    QTest::newRow("hls is live") << "http://h/live.m3u8" << SourceKind::stream << true;
    QTest::newRow("HLS upper case is live") << "http://h/LIVE.M3U8" << SourceKind::stream << true;
    QTest::newRow("mp4 is not live") << "http://h/movie.mp4" << SourceKind::stream << false;
    QTest::newRow("playlist") << "http://h/list.m3u" << SourceKind::playlist << false;
    QTest::newRow("playlist by query")
        << "http://h/get.php?type=m3u_plus" << SourceKind::playlist << false;
    QTest::newRow("markdown hls") << "[News](http://a/b.m3u8)" << SourceKind::stream << true;
    QTest::newRow("video service first")
        << "https://youtu.be/abc?list=x.m3u" << SourceKind::youtube << false;
    QTest::newRow("video service beats playlist query")
        << "https://www.youtube.com/watch?v=a&type=m3u" << SourceKind::youtube << false;
    QTest::newRow("space in path") << "http://h/my movie.mp4" << SourceKind::stream << false;
}

void TestSourceAddress::classify()
{
    QFETCH(QString, text);
    QFETCH(SourceKind, kind);
    QFETCH(bool, live);
    const Classification result = SourceAddress::classify(text);
    QCOMPARE(result.kind, kind);
    QCOMPARE(result.isLiveStream, live);
    QCOMPARE(result.youtubeContent.has_value(), kind == SourceKind::youtube);
    QCOMPARE(result.url.isEmpty(), kind == SourceKind::invalid);
}

void TestSourceAddress::invalidAddressMessageText()
{
    QCOMPARE(invalidAddressMessage, u"Enter a valid HTTP or HTTPS address.");
}

void TestSourceAddress::channelAddresses_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("fromNetworkList");
    QTest::addColumn<bool>("fromLocalList");
    QTest::newRow("http") << "http://h/live.m3u8" << true << true;
    QTest::newRow("https in capitals") << "HTTPS://h/live.m3u8" << true << true;
    QTest::newRow("rtmp") << "rtmp://h/app/stream" << true << true;
    QTest::newRow("rtsp") << "rtsp://10.0.0.2:554/cam" << true << true;
    QTest::newRow("udp multicast") << "udp://@239.0.0.1:1234" << true << true;
    QTest::newRow("rtp") << "rtp://239.0.0.1:5000" << true << true;
    QTest::newRow("http without host") << "http:///x.ts" << false << false;
    QTest::newRow("file") << "file:///home/me/film.mkv" << false << true;
    QTest::newRow("av lavfi") << "av://lavfi:sine" << false << false;
    QTest::newRow("lavf") << "lavf://file:///etc/passwd" << false << false;
    QTest::newRow("edl") << "edl:///etc/passwd" << false << false;
    QTest::newRow("fd") << "fd://0" << false << false;
    QTest::newRow("memory") << "memory://text" << false << false;
    QTest::newRow("relative") << "live/x.ts" << false << false;
}

void TestSourceAddress::channelAddresses()
{
    QFETCH(QString, address);
    QFETCH(bool, fromNetworkList);
    QFETCH(bool, fromLocalList);
    const QUrl url(address);
    QCOMPARE(SourceAddress::isPlayableChannelAddress(url, false), fromNetworkList);
    QCOMPARE(SourceAddress::isPlayableChannelAddress(url, true), fromLocalList);
}

QTEST_GUILESS_MAIN(TestSourceAddress)
#include "tst_sourceaddress.moc"
