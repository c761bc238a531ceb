// Real public playlists, byte for byte, with their quirks.

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString corpusPath(const QString &name)
{
    return QStringLiteral(LUMO_CORPUS_DIR "/m3u/") + name;
}

QList<PlaylistEntry> parseCorpusFile(const QString &name, const QUrl &base = {})
{
    QFile file(corpusPath(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(file.fileName()));
    return PlaylistParser::parse(decodePlaylistText(file.readAll()),
                                 base.isEmpty() ? QUrl::fromLocalFile(file.fileName()) : base);
}

} // namespace

class TestPlaylistCorpus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyFileParses_data();
    void everyFileParses();
    void crlfFile();
    void commasInsideQuotedAttributesLeaveNamesWhole();
    void byteOrderMarkFile();
    void relativeIndexResolvesAgainstItsAddress();
    void ipv6Addresses();
    void strayQuoteLineIsSkipped();
    void placeholderLinesAreRelativeAddresses();
    void plainListWithoutDirectives();
    void spaceBeforeCommaAndNoAttributes();
};

void TestPlaylistCorpus::initTestCase()
{
    if (!QDir(corpusPath(QString())).exists())
        QFAIL("the shared playlist corpus is missing beside the repository");
}

void TestPlaylistCorpus::everyFileParses_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("count");
    // Counts are the address lines of each file that are addresses (checked by hand against
    // the files: blank lines, directives and the byte-order-marked header are not).
    QTest::newRow("us") << "iptv-org_iptv__streams_us.m3u" << 953;
    QTest::newRow("in") << "iptv-org_iptv__streams_in.m3u" << 1037;
    QTest::newRow("cn") << "iptv-org_iptv__streams_cn.m3u" << 496;
    QTest::newRow("unsorted dump") << "iptv-org_iptv__channels_unsorted.m3u" << 1762;
    QTest::newRow("gh-pages index")
        << "orgTestCodacy11KRepos110MB_repo-9001-iptv__index.m3u" << 7521;
    QTest::newRow("Free-TV") << "Free-TV_IPTV__playlist.m3u8" << 2059;
    QTest::newRow("radio with BOM") << "Dimonovich_TV__RADIO.m3u" << 2444;
    QTest::newRow("no extension") << "Dimonovich_TV__TV" << 5092;
    QTest::newRow("IPTVru") << "smolnp_IPTVru__IPTVru.m3u" << 313;
    QTest::newRow("radio with stray quote") << "fanmingming_live__radio_m3u_index.m3u" << 448;
}

void TestPlaylistCorpus::everyFileParses()
{
    QFETCH(QString, name);
    QFETCH(int, count);
    const QList<PlaylistEntry> entries = parseCorpusFile(name);
    QCOMPARE(entries.size(), count);
    for (const PlaylistEntry &entry : entries) {
        QVERIFY(!entry.name().isEmpty());
        QVERIFY(!entry.name().contains(u'\r'));
        QVERIFY(!entry.url().isRelative());
        QVERIFY(entry.url().isValid());
        if (const std::optional<QString> code = entry.countryCode()) {
            QCOMPARE(code->size(), 2);
            QCOMPARE(*code, code->toUpper());
        }
        if (const std::optional<QUrl> logo = entry.logoURL())
            QVERIFY(!logo->isRelative());
    }
}

void TestPlaylistCorpus::crlfFile()
{
    const QList<PlaylistEntry> entries = parseCorpusFile(u"iptv-org_iptv__streams_us.m3u"_s);
    QCOMPARE(entries.first().name(), u"6 Wise Tv (720p)"_s);
    QCOMPARE(entries.first().url(), QUrl(u"https://live.enhdtv.com:8081/8150/index.m3u8"_s));
    QCOMPARE(entries.first().countryCode(), u"US"_s);
}

void TestPlaylistCorpus::commasInsideQuotedAttributesLeaveNamesWhole()
{
    // 164 entries of the index give a user agent holding a comma ("KHTML, like Gecko").
    const QList<PlaylistEntry> entries
        = parseCorpusFile(u"orgTestCodacy11KRepos110MB_repo-9001-iptv__index.m3u"_s);
    int named = 0;
    for (const PlaylistEntry &entry : entries) {
        QVERIFY2(!entry.name().contains(u"like Gecko"), qPrintable(entry.name()));
        QVERIFY2(!entry.name().contains(u"\","), qPrintable(entry.name()));
        if (entry.name() == u"21TV (480p)" || entry.name() == u"24 TV (1080p)")
            ++named;
    }
    QCOMPARE(named, 2);
}

void TestPlaylistCorpus::byteOrderMarkFile()
{
    const QList<PlaylistEntry> entries = parseCorpusFile(u"Dimonovich_TV__RADIO.m3u"_s);
    for (const PlaylistEntry &entry : entries)
        QVERIFY(!entry.name().contains(u"EXTM3U"));
}

void TestPlaylistCorpus::relativeIndexResolvesAgainstItsAddress()
{
    const QUrl base(u"https://iptv-org.github.io/iptv/index.m3u"_s);
    const QList<PlaylistEntry> entries = parseCorpusFile(u"iptv-org_iptv__index.m3u"_s, base);
    QCOMPARE(entries.size(), 161);
    for (const PlaylistEntry &entry : entries) {
        QVERIFY(entry.url().toString().startsWith(u"https://iptv-org.github.io/iptv/channels/"));
        QVERIFY(!entry.name().startsWith(u'#'));
    }
}

void TestPlaylistCorpus::ipv6Addresses()
{
    const QList<PlaylistEntry> entries = parseCorpusFile(u"fanmingming_live__tv_m3u_ipv6.m3u"_s);
    QCOMPARE(entries.size(), 411);
    QCOMPARE(entries.first().name(), u"CCTV-1"_s);
    QCOMPARE(entries.first().url().host(), u"2409:8087:3869:8021:1001::e5"_s);
    QCOMPARE(entries.first().url().port(), 6610);
    QCOMPARE(entries.first().groupTitle(), u"央视"_s);
}

void TestPlaylistCorpus::strayQuoteLineIsSkipped()
{
    // "\"http://..." cannot be an address (a relative path's first segment may not hold ":"),
    // so its channel's details go to the next address line instead of being lost.
    const QList<PlaylistEntry> entries
        = parseCorpusFile(u"fanmingming_live__radio_m3u_index.m3u"_s);
    for (const PlaylistEntry &entry : entries)
        QVERIFY(!entry.encodedUrl().contains("%22http"));
}

void TestPlaylistCorpus::placeholderLinesAreRelativeAddresses()
{
    // Like Foundation since macOS 14, characters a strict parser rejects are percent-encoded, so
    // a placeholder such as "[NO PUBLIC STREAM]" is a relative address like any other: the
    // channel stays listed and reports its failure when played.
    const QList<PlaylistEntry> entries
        = parseCorpusFile(u"Free-TV_IPTV__playlist.m3u8"_s, QUrl(u"http://h/playlist.m3u8"_s));
    const auto placeholders = std::count_if(entries.cbegin(), entries.cend(), [](const auto &e) {
        return e.encodedUrl() == "http://h/[NO%20PUBLIC%20STREAM]";
    });
    QCOMPARE(placeholders, 9);
}

void TestPlaylistCorpus::plainListWithoutDirectives()
{
    const QList<PlaylistEntry> entries = parseCorpusFile(u"mirgags_piPlayer__playlist.m3u"_s);
    QCOMPARE(entries.size(), 3);
    QVERIFY(entries[0].url().isLocalFile());
    QVERIFY(entries[0].url().toLocalFile().startsWith(u"/mnt/external/"));
    QVERIFY(entries[0].id() != entries[2].id());
}

void TestPlaylistCorpus::spaceBeforeCommaAndNoAttributes()
{
    const QList<PlaylistEntry> entries = parseCorpusFile(u"Dimonovich_TV__.m3u"_s);
    QCOMPARE(entries.size(), 180);
    for (const PlaylistEntry &entry : entries)
        QVERIFY(!entry.name().startsWith(u"#EXTINF"));
}

QTEST_GUILESS_MAIN(TestPlaylistCorpus)
#include "tst_playlistcorpus.moc"
