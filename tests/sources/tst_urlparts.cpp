#include "sources/plainaddress.h"
#include "sources/urlparts.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace UrlParts;

namespace {

// The reading of the same text from its UTF-8 bytes, as a playlist's ASCII line gives them;
// text that is not ASCII is never plain, from bytes as from characters.
std::optional<QByteArray> encodedFromBytes(const QString &text)
{
    QByteArray encoded;
    if (!PlainAddress::encode(QByteArrayView(text.toUtf8()), encoded))
        return std::nullopt;
    return encoded;
}

} // namespace

class TestUrlParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pathExtension_data();
    void pathExtension();
    void lastPathComponent_data();
    void lastPathComponent();
    void removingPercentEncoding_data();
    void removingPercentEncoding();
    void queryItemsWithoutValue();
    void queryItemsDecodeButKeepPlus();
    void noQueryGivesNoItems();
    void resolvesRelativeAddresses_data();
    void resolvesRelativeAddresses();
    void absoluteAddressIsKeptAsWritten();
    void hostsAreLowerCased();
    void ipv6HostsAndPorts();
    void encodesCharactersAStrictParserRejects_data();
    void encodesCharactersAStrictParserRejects();
    void rejectsWhatCannotBeAnAddress_data();
    void rejectsWhatCannotBeAnAddress();
    void pathComponentsSkipRootAndEmptySegments();
    void plainAddressesAreEncodedAsQUrlDoes_data();
    void plainAddressesAreEncodedAsQUrlDoes();
    void everyCorpusAddressIsEncodedAsQUrlDoes();
    void everyCharacterOfAPathIsJudgedAsQUrlDoes();
    void plainRelativePathsAreResolvedAsQUrlDoes_data();
    void plainRelativePathsAreResolvedAsQUrlDoes();
    void basesWithoutAPlainDirectory_data();
    void basesWithoutAPlainDirectory();
    void randomRelativeReferencesResolveAsQUrlDoes();
    void deletingPathExtension_data();
    void deletingPathExtension();
};

void TestUrlParts::pathExtension_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("extension");
    QTest::newRow("plain") << "http://h/list.m3u"
                           << "m3u";
    QTest::newRow("case kept") << "http://h/list.M3U"
                               << "M3U";
    QTest::newRow("last dot") << "http://h/a.tar.gz"
                              << "gz";
    QTest::newRow("query ignored") << "http://h/live.m3u8?token=a.b"
                                   << "m3u8";
    QTest::newRow("trailing slash ignored") << "http://h/list.m3u/"
                                            << "m3u";
    QTest::newRow("no dot") << "http://h/list"
                            << "";
    QTest::newRow("dot in folder only") << "http://h/a.b/list"
                                        << "";
    QTest::newRow("hidden file") << "http://h/.m3u"
                                 << "";
    QTest::newRow("ends with dot") << "http://h/list."
                                   << "";
    QTest::newRow("starts with two dots") << "http://h/..m3u"
                                          << "";
    QTest::newRow("space in extension") << "http://h/a.m%203u"
                                        << "";
    QTest::newRow("encoded dot") << "http://h/list%2Em3u"
                                 << "m3u";
    QTest::newRow("root") << "http://h/"
                          << "";
    QTest::newRow("no path") << "http://h"
                             << "";
}

void TestUrlParts::pathExtension()
{
    QFETCH(QString, address);
    QFETCH(QString, extension);
    const std::optional<QUrl> url = parse(address);
    QVERIFY(url);
    QCOMPARE(UrlParts::pathExtension(*url), extension);
}

void TestUrlParts::lastPathComponent_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("component");
    QTest::newRow("file") << "http://h/live/news%20one.ts"
                          << "news%20one.ts";
    QTest::newRow("trailing slashes") << "http://h/live/channel//"
                                      << "channel";
    QTest::newRow("root") << "http://h/"
                          << "";
    QTest::newRow("no path") << "http://h"
                             << "";
    QTest::newRow("only slashes") << "http://h///"
                                  << "";
    QTest::newRow("query not part") << "http://h/a/b?c=/d"
                                    << "b";
}

void TestUrlParts::lastPathComponent()
{
    QFETCH(QString, address);
    QFETCH(QString, component);
    QCOMPARE(UrlParts::lastPathComponent(*parse(address)), component);
}

void TestUrlParts::removingPercentEncoding_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::optional<QString>>("decoded");
    QTest::newRow("none") << "abc" << std::optional<QString>(u"abc"_s);
    QTest::newRow("space") << "news%20one" << std::optional<QString>(u"news one"_s);
    QTest::newRow("utf-8") << "%E4%B8%AD%E6%96%87" << std::optional<QString>(u"中文"_s);
    QTest::newRow("bad hex") << "a%ZZ" << std::optional<QString>();
    QTest::newRow("cut short") << "a%2" << std::optional<QString>();
    QTest::newRow("not utf-8") << "a%FF" << std::optional<QString>();
    QTest::newRow("plus stays") << "a+b" << std::optional<QString>(u"a+b"_s);
}

void TestUrlParts::removingPercentEncoding()
{
    QFETCH(QString, text);
    QFETCH(std::optional<QString>, decoded);
    QCOMPARE(UrlParts::removingPercentEncoding(text), decoded);
}

void TestUrlParts::queryItemsWithoutValue()
{
    const QList<QueryItem> items = queryItems(*parse(u"http://h/x?flag&v=&list=PL1"));
    const QList<QueryItem> expected {
        {u"flag"_s, std::nullopt}, {u"v"_s, u""_s}, {u"list"_s, u"PL1"_s}};
    QCOMPARE(items, expected);
}

void TestUrlParts::queryItemsDecodeButKeepPlus()
{
    const QList<QueryItem> items = queryItems(*parse(u"http://h/x?name=a+b%20c&k%3D1=2"));
    const QList<QueryItem> expected {{u"name"_s, u"a+b c"_s}, {u"k=1"_s, u"2"_s}};
    QCOMPARE(items, expected);
}

void TestUrlParts::noQueryGivesNoItems()
{
    QVERIFY(queryItems(*parse(u"http://h/x")).isEmpty());
    QVERIFY(queryItems(*parse(u"http://h/x?")).isEmpty());
}

void TestUrlParts::resolvesRelativeAddresses_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("resolved");
    const QString base = u"http://h.example/lists/tv/index.m3u?token=1"_s;
    QTest::newRow("sibling folder") << "ch1/index.m3u8"
                                    << "http://h.example/lists/tv/ch1/index.m3u8";
    QTest::newRow("parent") << "../x.ts"
                            << "http://h.example/lists/x.ts";
    QTest::newRow("root") << "/abs.ts"
                          << "http://h.example/abs.ts";
    QTest::newRow("other host") << "//cdn.example/x.ts"
                                << "http://cdn.example/x.ts";
    QTest::newRow("space") << "my channel.ts"
                           << "http://h.example/lists/tv/my%20channel.ts";
    QTest::newRow("query only") << "?q=2"
                                << "http://h.example/lists/tv/index.m3u?q=2";
}

void TestUrlParts::resolvesRelativeAddresses()
{
    QFETCH(QString, relative);
    QFETCH(QString, resolved);
    const QUrl base(u"http://h.example/lists/tv/index.m3u?token=1"_s);
    const std::optional<QUrl> url = parse(relative, base);
    QVERIFY(url);
    QCOMPARE(QString::fromLatin1(url->toEncoded()), resolved);
}

void TestUrlParts::absoluteAddressIsKeptAsWritten()
{
    // Dot segments of an absolute address are not removed, as Foundation keeps them.
    const std::optional<QUrl> url = parse(u"http://other/a/../b.ts", QUrl(u"http://h/x.m3u"_s));
    QVERIFY(url);
    QCOMPARE(url->toEncoded(), QByteArray("http://other/a/../b.ts"));
}

void TestUrlParts::hostsAreLowerCased()
{
    // QUrl lower-cases host names where Foundation keeps them as typed; every rule that looks at
    // hosts compares them lower-cased, so the difference never decides anything.
    const std::optional<QUrl> url = parse(u"HTTP://WWW.Example.COM/Path/File.TS");
    QVERIFY(url);
    QCOMPARE(url->host(), u"www.example.com"_s);
    QCOMPARE(url->scheme(), u"http"_s);
    QCOMPARE(url->path(), u"/Path/File.TS"_s);
}

void TestUrlParts::ipv6HostsAndPorts()
{
    const std::optional<QUrl> url = parse(u"http://[2409:8087:1::e5]:6610/PLTV/index.m3u8");
    QVERIFY(url);
    QCOMPARE(url->host(), u"2409:8087:1::e5"_s);
    QCOMPARE(url->port(), 6610);
    QCOMPARE(url->toEncoded(), QByteArray("http://[2409:8087:1::e5]:6610/PLTV/index.m3u8"));
    const std::optional<QUrl> resolved = parse(u"next.ts", *url);
    QVERIFY(resolved);
    QCOMPARE(resolved->toEncoded(), QByteArray("http://[2409:8087:1::e5]:6610/PLTV/next.ts"));
    QCOMPARE(parse(u"http://10.0.0.1:8080/a")->port(), 8080);
}

void TestUrlParts::encodesCharactersAStrictParserRejects_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("space in path") << "http://h/my file.ts" << QByteArray("http://h/my%20file.ts");
    QTest::newRow("non-ASCII path")
        << "http://h/中文.m3u8" << QByteArray("http://h/%E4%B8%AD%E6%96%87.m3u8");
    QTest::newRow("stray percent") << "http://h/100%.ts" << QByteArray("http://h/100%25.ts");
    QTest::newRow("pipe") << "http://h/a|b" << QByteArray("http://h/a%7Cb");
}

void TestUrlParts::encodesCharactersAStrictParserRejects()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, encoded);
    const std::optional<QUrl> url = parse(text);
    QVERIFY(url);
    QCOMPARE(url->toEncoded(), encoded);
}

void TestUrlParts::rejectsWhatCannotBeAnAddress_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("space in host") << "http://bad host/x.ts";
    QTest::newRow("port not a number") << "http://h:port/x.ts";
    QTest::newRow("port too large") << "http://h:99999/x.ts";
    QTest::newRow("unclosed IPv6") << "http://[::1/x.ts";
    QTest::newRow("bad IPv6") << "http://[::zz]/x.ts";
}

void TestUrlParts::rejectsWhatCannotBeAnAddress()
{
    QFETCH(QString, text);
    QVERIFY(!parse(text));
    QVERIFY(!parse(text, QUrl(u"http://base/list.m3u"_s)));
}

void TestUrlParts::pathComponentsSkipRootAndEmptySegments()
{
    QCOMPARE(pathComponents(*parse(u"http://h/channel//x/live/ID/")),
             QStringList({u"channel"_s, u"x"_s, u"live"_s, u"ID"_s}));
    QVERIFY(pathComponents(*parse(u"http://h/")).isEmpty());
}

void TestUrlParts::plainAddressesAreEncodedAsQUrlDoes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("plain");
    QTest::newRow("simple") << "http://h.example/live/1.m3u8" << true;
    QTest::newRow("https with port and query")
        << "https://cdn.example.com:8443/a/b.ts?token=x&e=1" << true;
    QTest::newRow("sub-delims") << "http://h.example/a!$&'()*+,;=:@/b?c=d?e" << true;
    QTest::newRow("no path") << "http://h.example" << true;
    QTest::newRow("query without path") << "http://h.example?x=1" << true;
    QTest::newRow("empty query") << "http://h.example/x?" << true;
    QTest::newRow("default port kept") << "http://h.example:80/x" << true;
    QTest::newRow("upper-case host") << "http://H.example/x" << false;
    QTest::newRow("upper-case scheme") << "HTTP://h.example/x" << false;
    QTest::newRow("percent") << "http://h.example/a%20b" << false;
    QTest::newRow("fragment") << "http://h.example/a#b" << false;
    QTest::newRow("space") << "http://h.example/a b" << false;
    QTest::newRow("non-ASCII") << "http://h.example/é" << false;
    QTest::newRow("IPv4") << "http://10.0.0.1/x" << false;
    QTest::newRow("short IPv4") << "http://10.1/x" << false;
    // QUrl reads hosts made of numbers as IPv4 addresses, in any base and with 1 to 4 parts.
    QTest::newRow("hexadecimal IPv4") << "http://0x0" << false;
    QTest::newRow("one-part IPv4") << "http://0x7f000001/x" << false;
    QTest::newRow("octal IPv4") << "http://0177.0.0.1/x" << false;
    QTest::newRow("two-part IPv4") << "http://127.1" << false;
    QTest::newRow("name beginning with a digit") << "http://9tv.example/x" << true;
    QTest::newRow("IPv6") << "http://[::1]/x" << false;
    QTest::newRow("user info") << "http://user@h.example/x" << false;
    QTest::newRow("empty port") << "http://h.example:/x" << false;
    QTest::newRow("port with leading zero") << "http://h.example:080/x" << false;
    QTest::newRow("port too large") << "http://h.example:65536/x" << false;
    QTest::newRow("empty label") << "http://h..example/x" << false;
    QTest::newRow("punycode") << "http://xn--bcher-kva.example/x" << false;
    QTest::newRow("hyphen at label end") << "http://h-.example/x" << false;
    QTest::newRow("empty host") << "http:///x" << false;
    QTest::newRow("relative") << "live/1.ts" << false;
    QTest::newRow("other scheme") << "rtmp://h.example/x" << false;
    QTest::newRow("backslash") << "http://h.example/a\\b" << false;
    QTest::newRow("braces") << "http://h.example/{a}" << false;
}

void TestUrlParts::plainAddressesAreEncodedAsQUrlDoes()
{
    QFETCH(QString, text);
    QFETCH(bool, plain);
    const std::optional<QByteArray> fast = PlainAddress::encoded(text);
    QCOMPARE(fast.has_value(), plain);
    QCOMPARE(encodedFromBytes(text), fast);
    if (fast) {
        const QUrl url(text, QUrl::TolerantMode);
        QVERIFY(url.isValid());
        QCOMPARE(*fast, url.toEncoded());
    }
}

void TestUrlParts::everyCharacterOfAPathIsJudgedAsQUrlDoes()
{
    // Long paths are checked many characters at once, short ones and their ends one by one:
    // each character, at each kind of place, is plain exactly when it is one of these.
    const QString plainCharacters = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                    u"0123456789-._~!$&'()*+,;=:@/?"_s;
    const QString letters = u"abcdefghijklmnopqrstuvwxyz"_s;
    const QList<std::pair<QString, QString>> places {
        {QString(), QString()},
        {u"a"_s, u"b"_s},
        {letters, letters},
        {letters, u"b"_s},
        {letters.left(14), letters.left(2)},
        {letters.left(15), QString()},
        {letters + letters, letters.left(5)},
    };
    QList<char16_t> characters;
    for (char16_t c = 0; c < 0x80; ++c)
        characters.append(c);
    characters.append({0xA0, 0xE9, 0x100, 0x4E2D, 0xFEFF});
    for (const char16_t c : characters) {
        for (const auto &[before, after] : places) {
            const QString text = u"http://h.example/"_s + before + QChar(c) + after;
            const std::optional<QByteArray> fast = PlainAddress::encoded(text);
            QVERIFY2(fast.has_value() == plainCharacters.contains(QChar(c)),
                     qPrintable(u"U+%1 in %2"_s.arg(int(c), 4, 16, QChar(u'0')).arg(text)));
            if (fast)
                QCOMPARE(*fast, QUrl(text, QUrl::TolerantMode).toEncoded());
            QCOMPARE(encodedFromBytes(text), fast);
        }
    }
}

void TestUrlParts::everyCorpusAddressIsEncodedAsQUrlDoes()
{
    const QDir corpus(QStringLiteral(LUMO_CORPUS_DIR "/m3u"));
    QVERIFY(corpus.exists());
    int plainCount = 0;
    for (const QFileInfo &info : corpus.entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QStringList lines
            = QString::fromUtf8(file.readAll()).split(QRegularExpression(u"[\\r\\n]"_s));
        for (const QString &line : lines) {
            // Address lines, and every quoted value (logos among them).
            QStringList candidates {line.trimmed()};
            for (const QString &piece : line.split(u'"'))
                candidates.append(piece.trimmed());
            for (const QString &candidate : candidates) {
                const std::optional<QByteArray> fast = PlainAddress::encoded(candidate);
                QVERIFY2(encodedFromBytes(candidate) == fast, qPrintable(candidate));
                if (!fast)
                    continue;
                ++plainCount;
                const QUrl url(candidate, QUrl::TolerantMode);
                QVERIFY2(url.isValid() && *fast == url.toEncoded(), qPrintable(candidate));
            }
        }
    }
    QVERIFY(plainCount > 20000);
}

void TestUrlParts::plainRelativePathsAreResolvedAsQUrlDoes_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("plain");
    const QString list = u"http://h.example/lists/tv/index.m3u?token=1"_s;
    QTest::newRow("sibling file") << list << "x.ts" << true;
    QTest::newRow("sub-folder") << list << "live/u1/p1/0.ts" << true;
    QTest::newRow("with a query") << list << "live/1.ts?a=b/c&d=./e" << true;
    QTest::newRow("sub-delims") << list << "a!$&'()*+,;=@/b:c" << true;
    QTest::newRow("dots inside names") << list << "a.b/...c/d..ts" << true;
    QTest::newRow("list without a query")
        << u"https://cdn.example:8443/p/list.m3u"_s << "1.ts" << true;
    QTest::newRow("list in the root") << u"http://h.example/list.m3u"_s << "1.ts" << true;
    QTest::newRow("local file") << u"file:///tmp/lists/list.m3u"_s << "a/b.ts" << true;
    QTest::newRow("upper-case host of the base") << u"http://H.Example/x/l.m3u"_s << "1.ts" << true;
    QTest::newRow("IPv6 base") << u"http://[2409:8087:1::e5]:6610/PLTV/l.m3u"_s << "1.ts" << true;
    QTest::newRow("base with user info") << u"http://u:p@h.example/l.m3u"_s << "1.ts" << true;
    QTest::newRow("dot segment") << list << "./x.ts" << false;
    QTest::newRow("parent segment") << list << "a/../x.ts" << false;
    QTest::newRow("trailing dot segment") << list << "a/.." << false;
    QTest::newRow("lone dot") << list << "." << false;
    // Qt 6.8 merges these slashes in a local file's path, Qt 6.4 does not.
    QTest::newRow("empty segment") << list << "a//b.ts" << false;
    QTest::newRow("empty segment in a local file") << u"file:///tmp/l.m3u"_s << "a//b.ts" << false;
    QTest::newRow("slashes in the query") << list << "a.ts?b//c" << true;
    QTest::newRow("root") << list << "/abs.ts" << false;
    QTest::newRow("network path") << list << "//cdn.example/x.ts" << false;
    QTest::newRow("query only") << list << "?q=2" << false;
    QTest::newRow("scheme") << list << "rtmp:x" << false;
    QTest::newRow("colon in the first segment") << list << "a:b/c.ts" << false;
    QTest::newRow("space") << list << "my channel.ts" << false;
    QTest::newRow("percent") << list << "a%20b.ts" << false;
    QTest::newRow("fragment") << list << "a.ts#t=1" << false;
    QTest::newRow("non-ASCII") << list << "中文.ts" << false;
    QTest::newRow("backslash") << list << "a\\b.ts" << false;
}

void TestUrlParts::plainRelativePathsAreResolvedAsQUrlDoes()
{
    QFETCH(QString, base);
    QFETCH(QString, text);
    QFETCH(bool, plain);
    const QUrl baseUrl(base);
    const QByteArray directory = PlainAddress::baseDirectory(baseUrl);
    QVERIFY(!directory.isEmpty());
    QByteArray encodedText("untouched");
    QCOMPARE(PlainAddress::encodeRelative(text, directory, encodedText), plain);
    QByteArray fromBytes("untouched");
    QCOMPARE(PlainAddress::encodeRelative(QByteArrayView(text.toUtf8()), directory, fromBytes),
             plain);
    QCOMPARE(fromBytes, encodedText);
    const std::optional<QUrl> slow = parse(text, baseUrl);
    QVERIFY(slow);
    if (plain)
        QCOMPARE(encodedText, slow->toEncoded());
    else
        QCOMPARE(encodedText, QByteArray("untouched"));
}

void TestUrlParts::basesWithoutAPlainDirectory_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("no path") << "http://h.example";
    QTest::newRow("query without a path") << "http://h.example?x=1";
    QTest::newRow("dot segment") << "http://h.example/a/./l.m3u";
    QTest::newRow("parent segment") << "http://h.example/a/../l.m3u";
    QTest::newRow("empty segment") << "file:///tmp//a/l.m3u";
    QTest::newRow("relative") << "lists/l.m3u";
    QTest::newRow("empty") << "";
    QTest::newRow("no hierarchy") << "mailto:a@h.example";
}

void TestUrlParts::basesWithoutAPlainDirectory()
{
    QFETCH(QString, base);
    QCOMPARE(PlainAddress::baseDirectory(QUrl(base)), QByteArray());
}

// Random references made of the characters that decide how an address is read, against bases of
// every kind: whenever the quick reading applies, it gives what QUrl gives.
void TestUrlParts::randomRelativeReferencesResolveAsQUrlDoes()
{
    const QStringList bases {u"http://h.example/lists/tv/index.m3u?token=1"_s,
                             u"http://h.example/l.m3u"_s,
                             u"file:///tmp/a/l.m3u"_s,
                             u"https://h.example:8443/a/b/"_s,
                             u"http://h.example/a.b/c..d/l"_s,
                             u"http://h.example/a/.."_s};
    const QString alphabet = u"ab./?:@#% -_~!$&'()*+,;=\\é[]"_s;
    QRandomGenerator random(20261126);
    int plainCount = 0;
    for (const QString &base : bases) {
        const QUrl baseUrl(base);
        const QByteArray directory = PlainAddress::baseDirectory(baseUrl);
        QVERIFY2(!directory.isEmpty(), qPrintable(base));
        for (int i = 0; i < 20000; ++i) {
            QString text;
            const int length = 1 + random.bounded(8);
            for (int k = 0; k < length; ++k)
                text += alphabet[random.bounded(int(alphabet.size()))];
            QByteArray fast;
            const bool plain = PlainAddress::encodeRelative(text, directory, fast);
            QByteArray fromBytes;
            QCOMPARE(
                PlainAddress::encodeRelative(QByteArrayView(text.toUtf8()), directory, fromBytes),
                plain);
            if (!plain)
                continue;
            QCOMPARE(fromBytes, fast);
            ++plainCount;
            const std::optional<QUrl> slow = parse(text, baseUrl);
            QVERIFY2(slow && fast == slow->toEncoded(),
                     qPrintable(base + u" + "_s + text + u" -> "_s + QString::fromLatin1(fast)));
        }
    }
    QVERIFY(plainCount > 5000);
}

void TestUrlParts::deletingPathExtension_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<QString>("stem");
    QTest::newRow("extension") << "news one.ts"
                               << "news one";
    QTest::newRow("last extension only") << "a.tar.gz"
                                         << "a.tar";
    QTest::newRow("none") << "live"
                          << "live";
    QTest::newRow("hidden file") << ".ts"
                                 << ".ts";
    QTest::newRow("trailing dot") << "a."
                                  << "a.";
    QTest::newRow("space in extension") << "a.b c"
                                        << "a.b c";
}

void TestUrlParts::deletingPathExtension()
{
    QFETCH(QString, component);
    QFETCH(QString, stem);
    QCOMPARE(UrlParts::deletingPathExtension(component), stem);
}

QTEST_GUILESS_MAIN(TestUrlParts)
#include "tst_urlparts.moc"
