#include "sources/playlisterror.h"
#include "sources/playlistparser.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QUrl base(QStringLiteral("http://lists.example/tv/index.m3u"));

QList<PlaylistEntry> parse(const QString &text)
{
    return PlaylistParser::parse(text, base);
}

} // namespace

class TestPlaylistParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headerOnlyGivesNoEntry();
    void addressWithoutExtinfIsNamedByItsLastPathComponent();
    void addressWithoutPathIsNamedByItsHost();
    void addressWithUndecodableComponentIsNamedByItsHost();
    void addressWithoutComponentOrHostIsNamedStream();
    void emptyTitleFallsBackToTvgName();
    void titleKeepsFurtherCommas();
    void aCommaInsideAQuotedAttributeIsNoTitle_data();
    void aCommaInsideAQuotedAttributeIsNoTitle();
    void titleWithoutCommaIsTheWholeLine();
    void titleIsTrimmed();
    void emptyTvgCountryFallsBackToTvgID();
    void tvgCountryBeatsCountry();
    void countryAttributeIsUsedWhenTvgCountryIsMissing();
    void unusableCountryFallsBackToTvgID();
    void attributesInCapitalsAreFound();
    void logoMustBeAbsolute();
    void groupTitle();
    void sameAddressTwiceGivesTwoEntries();
    void extinfWithoutColonIsIgnored();
    void lowerCaseExtinfIsIgnored();
    void otherDirectivesKeepThePendingRecord();
    void invalidAddressKeepsThePendingRecord();
    void laterExtinfReplacesTheWholePendingRecord();
    void pendingRecordIsClearedAfterAnAddress();
    void relativeAddressesResolveAgainstThePlaylist();
    void lineEndings_data();
    void lineEndings();
    void linesAreTrimmed();
    void attribute_data();
    void attribute();
    void normalizedCountryCode_data();
    void normalizedCountryCode();
    void inferredCountryCode_data();
    void inferredCountryCode();
    void entryEqualityAndHashingTakeAllFields();
    void entriesKeepTheirTextsWhenTheListIsGone();
    void errorTexts();
};

void TestPlaylistParser::headerOnlyGivesNoEntry()
{
    QVERIFY(parse(u"#EXTM3U"_s).isEmpty());
    QVERIFY(parse(u"#EXTM3U\n"_s).isEmpty());
    QVERIFY(parse(QString()).isEmpty());
}

void TestPlaylistParser::addressWithoutExtinfIsNamedByItsLastPathComponent()
{
    const QList<PlaylistEntry> entries = parse(u"http://h/live/news%20one.ts"_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"news one"_s);
    QCOMPARE(entries[0].url(), QUrl(u"http://h/live/news%20one.ts"_s));
    QCOMPARE(entries[0].logoURL(), std::nullopt);
    QCOMPARE(entries[0].groupTitle(), std::nullopt);
    QCOMPARE(entries[0].countryCode(), std::nullopt);
}

void TestPlaylistParser::addressWithoutPathIsNamedByItsHost()
{
    QCOMPARE(parse(u"http://h/"_s).value(0).name(), u"h"_s);
    QCOMPARE(parse(u"http://h"_s).value(0).name(), u"h"_s);
    QCOMPARE(parse(u"http://[::1]:8080/"_s).value(0).name(), u"::1"_s);
}

void TestPlaylistParser::addressWithUndecodableComponentIsNamedByItsHost()
{
    // %FF is not UTF-8, so the component cannot be decoded.
    QCOMPARE(parse(u"http://h/a%FF.ts"_s).value(0).name(), u"h"_s);
}

void TestPlaylistParser::addressWithoutComponentOrHostIsNamedStream()
{
    const QList<PlaylistEntry> entries
        = PlaylistParser::parse(u"mailto:"_s, QUrl(u"http://h/x.m3u"_s));
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Stream"_s);
}

void TestPlaylistParser::emptyTitleFallsBackToTvgName()
{
    const QList<PlaylistEntry> entries = parse(u"#EXTINF:-1 tvg-name=\"A\",\nhttp://h/x.ts"_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"A"_s);
    const QList<PlaylistEntry> blankTitle
        = parse(u"#EXTINF:-1 tvg-name=\"A\",   \nhttp://h/x.ts"_s);
    QCOMPARE(blankTitle.value(0).name(), u"A"_s);
}

void TestPlaylistParser::titleKeepsFurtherCommas()
{
    const QList<PlaylistEntry> entries = parse(u"#EXTINF:-1 tvg-name=\"A\",B, C\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).name(), u"B, C"_s);
}

void TestPlaylistParser::aCommaInsideAQuotedAttributeIsNoTitle_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("agent");
    QTest::newRow("user agent with a comma")
        << u"#EXTINF:-1 tvg-id=\"21TV.am\" group-title=\"Entertainment\" user-agent=\"Mozilla/5.0 "
           "(KHTML, like Gecko) Mobile/15E148\",21TV (480p)"_s
        << u"21TV (480p)"_s << QString();
    QTest::newRow("header attribute with commas")
        << u"#EXTINF:-1 http-user-agent=\"A, B, C\" group-title=\"News\",One, Two"_s
        << u"One, Two"_s << u"A, B, C"_s;
    QTest::newRow("a name with an equals sign and a quote")
        << u"#EXTINF:-1 tvg-id=\"x\",Say =\"hi, there\""_s << u"Say =\"hi, there\""_s << QString();
    // An unclosed quote: the first comma, as always.
    QTest::newRow("unclosed quote")
        << u"#EXTINF:-1 tvg-name=\"Open, Still open"_s << u"Still open"_s << QString();
    QTest::newRow("a quote that is no attribute")
        << u"#EXTINF:-1 \"quoted, text\""_s << u"text\""_s << QString();
}

void TestPlaylistParser::aCommaInsideAQuotedAttributeIsNoTitle()
{
    QFETCH(QString, line);
    QFETCH(QString, name);
    QFETCH(QString, agent);
    const QList<PlaylistEntry> entries = parse(line + u"\nhttp://h/x.ts"_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), name);
    QCOMPARE(entries[0].headers().userAgent, agent);
}

void TestPlaylistParser::titleWithoutCommaIsTheWholeLine()
{
    const QList<PlaylistEntry> entries = parse(u"#EXTINF:-1 tvg-name=\"A\"\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).name(), u"#EXTINF:-1 tvg-name=\"A\""_s);
}

void TestPlaylistParser::titleIsTrimmed()
{
    QCOMPARE(parse(u"#EXTINF:-1,\t News \t\nhttp://h/x.ts"_s).value(0).name(), u"News"_s);
}

void TestPlaylistParser::emptyTvgCountryFallsBackToTvgID()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 tvg-id=\"x.de\" tvg-country=\"\",X\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).countryCode(), u"DE"_s);
}

void TestPlaylistParser::tvgCountryBeatsCountry()
{
    const QList<PlaylistEntry> entries = parse(
        u"#EXTINF:-1 country=\"fr\" tvg-country=\"us;ca\" tvg-id=\"a.de\",X\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).countryCode(), u"US"_s);
}

void TestPlaylistParser::countryAttributeIsUsedWhenTvgCountryIsMissing()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 country=\" fr\" tvg-id=\"a.de\",X\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).countryCode(), u"FR"_s);
}

void TestPlaylistParser::unusableCountryFallsBackToTvgID()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 tvg-country=\"USA\" tvg-id=\"cnn.us\",X\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).countryCode(), u"US"_s);
    const QList<PlaylistEntry> none
        = parse(u"#EXTINF:-1 tvg-country=\"USA\" tvg-id=\"news.abc\",X\nhttp://h/x.ts"_s);
    QCOMPARE(none.value(0).countryCode(), std::nullopt);
}

void TestPlaylistParser::attributesInCapitalsAreFound()
{
    const QList<PlaylistEntry> entries = parse(
        u"#EXTINF:-1 TVG-LOGO=\"http://h/logo.png\" GROUP-TITLE=\"News\" TVG-COUNTRY=\"gb\",X\n"
        "http://h/x.ts"_s);
    QCOMPARE(entries.value(0).logoURL(), QUrl(u"http://h/logo.png"_s));
    QCOMPARE(entries.value(0).groupTitle(), u"News"_s);
    QCOMPARE(entries.value(0).countryCode(), u"GB"_s);
}

void TestPlaylistParser::logoMustBeAbsolute()
{
    QCOMPARE(parse(u"#EXTINF:-1 tvg-logo=\"logo.png\",X\nhttp://h/x.ts"_s).value(0).logoURL(),
             std::nullopt);
    QCOMPARE(parse(u"#EXTINF:-1 tvg-logo=\"http://bad host/l.png\",X\nhttp://h/x.ts"_s)
                 .value(0)
                 .logoURL(),
             std::nullopt);
    QCOMPARE(
        parse(u"#EXTINF:-1 tvg-logo=\"https://h/a b.png\",X\nhttp://h/x.ts"_s).value(0).logoURL(),
        QUrl(u"https://h/a%20b.png"_s));
}

void TestPlaylistParser::groupTitle()
{
    QCOMPARE(parse(u"#EXTINF:-1 group-title=\" Sports \",X\nhttp://h/x.ts"_s).value(0).groupTitle(),
             u"Sports"_s);
    QCOMPARE(parse(u"#EXTINF:-1 group-title=\"\",X\nhttp://h/x.ts"_s).value(0).groupTitle(),
             std::nullopt);
}

void TestPlaylistParser::sameAddressTwiceGivesTwoEntries()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1,A\nhttp://h/x.ts\n#EXTINF:-1,A\nhttp://h/x.ts\n"_s);
    QCOMPARE(entries.size(), 2);
    QVERIFY(entries[0].id() != entries[1].id());
    QVERIFY(entries[0] != entries[1]);
    QCOMPARE(entries[0].name(), entries[1].name());
    QCOMPARE(entries[0].url(), entries[1].url());
}

void TestPlaylistParser::extinfWithoutColonIsIgnored()
{
    const QList<PlaylistEntry> entries = parse(u"#EXTINF -1,Named\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).name(), u"x"_s);
}

void TestPlaylistParser::lowerCaseExtinfIsIgnored()
{
    const QList<PlaylistEntry> entries = parse(u"#extinf:-1,Named\nhttp://h/x.ts"_s);
    QCOMPARE(entries.value(0).name(), u"x"_s);
}

void TestPlaylistParser::otherDirectivesKeepThePendingRecord()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 group-title=\"G\",Named\n#EXTVLCOPT:http-user-agent=x\n#EXTGRP:Other\n"
                "http://h/x.ts"_s);
    QCOMPARE(entries.value(0).name(), u"Named"_s);
    QCOMPARE(entries.value(0).groupTitle(), u"G"_s);
}

void TestPlaylistParser::invalidAddressKeepsThePendingRecord()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 group-title=\"G\",Named\nhttp://bad host/x\nhttp://h:99999/\n"
                "http://h/x.ts\n"_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Named"_s);
    QCOMPARE(entries[0].groupTitle(), u"G"_s);
}

void TestPlaylistParser::laterExtinfReplacesTheWholePendingRecord()
{
    const QList<PlaylistEntry> entries = parse(
        u"#EXTINF:-1 group-title=\"G\" tvg-logo=\"http://h/l.png\" tvg-country=\"US\",First\n"
        "#EXTINF:-1,Second\nhttp://h/x.ts"_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Second"_s);
    QCOMPARE(entries[0].groupTitle(), std::nullopt);
    QCOMPARE(entries[0].logoURL(), std::nullopt);
    QCOMPARE(entries[0].countryCode(), std::nullopt);
}

void TestPlaylistParser::pendingRecordIsClearedAfterAnAddress()
{
    const QList<PlaylistEntry> entries
        = parse(u"#EXTINF:-1 group-title=\"G\",Named\nhttp://h/a.ts\nhttp://h/b.ts"_s);
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[1].name(), u"b"_s);
    QCOMPARE(entries[1].groupTitle(), std::nullopt);
}

void TestPlaylistParser::relativeAddressesResolveAgainstThePlaylist()
{
    const QList<PlaylistEntry> entries
        = parse(u"ch1/index.m3u8\n../x.ts\n/abs.ts\n//cdn.example/y.ts\nhttps://other/z.ts"_s);
    QCOMPARE(entries.size(), 5);
    QCOMPARE(entries[0].url(), QUrl(u"http://lists.example/tv/ch1/index.m3u8"_s));
    QCOMPARE(entries[0].name(), u"index"_s);
    QCOMPARE(entries[1].url(), QUrl(u"http://lists.example/x.ts"_s));
    QCOMPARE(entries[2].url(), QUrl(u"http://lists.example/abs.ts"_s));
    QCOMPARE(entries[3].url(), QUrl(u"http://cdn.example/y.ts"_s));
    QCOMPARE(entries[4].url(), QUrl(u"https://other/z.ts"_s));
}

void TestPlaylistParser::lineEndings_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("LF") << u"#EXTINF:-1,A\nhttp://h/a.ts\n#EXTINF:-1,B\nhttp://h/b.ts"_s;
    QTest::newRow("CRLF")
        << u"#EXTINF:-1,A\r\nhttp://h/a.ts\r\n#EXTINF:-1,B\r\nhttp://h/b.ts\r\n"_s;
    QTest::newRow("CR") << u"#EXTINF:-1,A\rhttp://h/a.ts\r#EXTINF:-1,B\rhttp://h/b.ts\r"_s;
    QTest::newRow("NEL and separators")
        << u"#EXTINF:-1,A\u0085http://h/a.ts\u2028#EXTINF:-1,B\u2029http://h/b.ts"_s;
    QTest::newRow("vertical tab and form feed")
        << u"#EXTINF:-1,A\vhttp://h/a.ts\f#EXTINF:-1,B\nhttp://h/b.ts"_s;
    QTest::newRow("blank lines between")
        << u"\n\n#EXTINF:-1,A\n\n\nhttp://h/a.ts\n \n#EXTINF:-1,B\nhttp://h/b.ts\n\n"_s;
}

void TestPlaylistParser::lineEndings()
{
    QFETCH(QString, text);
    const QList<PlaylistEntry> entries = parse(text);
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries[0].name(), u"A"_s);
    QCOMPARE(entries[0].url(), QUrl(u"http://h/a.ts"_s));
    QCOMPARE(entries[1].name(), u"B"_s);
    QCOMPARE(entries[1].url(), QUrl(u"http://h/b.ts"_s));
}

void TestPlaylistParser::linesAreTrimmed()
{
    const QList<PlaylistEntry> entries = parse(u"  \t#EXTINF:-1,A  \n\t http://h/a.ts  "_s);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"A"_s);
    QCOMPARE(entries[0].url(), QUrl(u"http://h/a.ts"_s));
}

void TestPlaylistParser::attribute_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("line");
    QTest::addColumn<std::optional<QString>>("value");
    const std::optional<QString> none;
    const auto some = [](const char *text) {
        return std::optional<QString>(QString::fromUtf8(text));
    };
    QTest::newRow("found") << "tvg-id"
                           << "#EXTINF:-1 tvg-id=\"a.us\",X" << some("a.us");
    QTest::newRow("trimmed") << "tvg-id"
                             << "#EXTINF:-1 tvg-id=\"  a.us \",X" << some("a.us");
    QTest::newRow("missing") << "tvg-id"
                             << "#EXTINF:-1,X" << none;
    QTest::newRow("empty") << "tvg-id"
                           << "#EXTINF:-1 tvg-id=\"\",X" << none;
    QTest::newRow("blank") << "tvg-id"
                           << "#EXTINF:-1 tvg-id=\"  \",X" << none;
    QTest::newRow("unterminated") << "tvg-id"
                                  << "#EXTINF:-1 tvg-id=\"a.us,X" << none;
    QTest::newRow("unquoted") << "tvg-id"
                              << "#EXTINF:-1 tvg-id=a.us,X" << none;
    QTest::newRow("single quotes") << "tvg-id"
                                   << "#EXTINF:-1 tvg-id='a.us',X" << none;
    QTest::newRow("name in capitals") << "tvg-id"
                                      << "#EXTINF:-1 TVG-ID=\"a.us\",X" << some("a.us");
    QTest::newRow("asked in capitals") << "TVG-ID"
                                       << "#EXTINF:-1 tvg-id=\"a.us\",X" << some("a.us");
    QTest::newRow("first occurrence") << "tvg-id"
                                      << "tvg-id=\"one\" tvg-id=\"two\"" << some("one");
    QTest::newRow("country matches inside tvg-country") << "country"
                                                        << "tvg-country=\"fr\"" << some("fr");
    QTest::newRow("space before =") << "tvg-id"
                                    << "tvg-id =\"a\"" << none;
    QTest::newRow("value with comma") << "tvg-name"
                                      << "tvg-name=\"A, B\",C" << some("A, B");
    // Names longer than eight characters differ before their last eight as well.
    QTest::newRow("long name in mixed case")
        << "http-user-agent"
        << "#EXTINF:-1 xttp-user-agent=\"no\" HTTP-User-Agent=\"VLC\",X" << some("VLC");
    QTest::newRow("long name differing at its start")
        << "http-referrer"
        << "#EXTINF:-1 mttp-referrer=\"no\",X" << none;
    QTest::newRow("short line before the name") << "id"
                                                << "id=\"a\"" << some("a");
    // A sign that folds to an ASCII letter: Unicode case folding applies.
    QTest::newRow("kelvin sign") << "tvg-kind"
                                 << "tvg-\u212Aind=\"k\",X" << some("k");
    QTest::newRow("non-ASCII before the name")
        << "tvg-id"
        << "#EXTINF:-1 \u00e9\u00e9\u00e9tvg-id=\"a.us\",X" << some("a.us");
}

void TestPlaylistParser::attribute()
{
    QFETCH(QString, name);
    QFETCH(QString, line);
    QFETCH(std::optional<QString>, value);
    QCOMPARE(PlaylistParser::attribute(name, line), value);
}

void TestPlaylistParser::normalizedCountryCode_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<std::optional<QString>>("code");
    const std::optional<QString> none;
    const auto some = [](const char *text) {
        return std::optional<QString>(QString::fromUtf8(text));
    };
    QTest::newRow("list with semicolon") << "us;ca" << some("US");
    QTest::newRow("three letters") << "USA" << none;
    QTest::newRow("leading space") << " de" << some("DE");
    QTest::newRow("comma list") << "de,at" << some("DE");
    QTest::newRow("leading separators") << ",; fr" << some("FR");
    QTest::newRow("one letter") << "u" << none;
    QTest::newRow("empty") << "" << none;
    QTest::newRow("only separators") << ", ;" << none;
    QTest::newRow("digits kept") << "12" << some("12");
    QTest::newRow("accented letters") << "éü" << some("ÉÜ");
    QTest::newRow("sharp s becomes SS") << "ß" << some("SS");
    QTest::newRow("combining accent counts with its letter") << "e\u0301s" << some("E\u0301S");
}

void TestPlaylistParser::normalizedCountryCode()
{
    QFETCH(QString, value);
    QFETCH(std::optional<QString>, code);
    QCOMPARE(PlaylistParser::normalizedCountryCode(value), code);
}

void TestPlaylistParser::inferredCountryCode_data()
{
    QTest::addColumn<std::optional<QString>>("tvgID");
    QTest::addColumn<std::optional<QString>>("code");
    const std::optional<QString> none;
    const auto some = [](const char *text) {
        return std::optional<QString>(QString::fromUtf8(text));
    };
    QTest::newRow("absent") << none << none;
    QTest::newRow("feed suffix") << some("One.uk@SD") << some("UK");
    QTest::newRow("plain") << some("cnn.us") << some("US");
    QTest::newRow("only the code") << some("fr") << some("FR");
    QTest::newRow("any two characters") << some("sports.hd") << some("HD");
    QTest::newRow("three characters") << some("news.abc") << none;
    QTest::newRow("trailing dot") << some("x.de.") << some("DE");
    QTest::newRow("leading at") << some("@SD") << some("SD");
    QTest::newRow("at then more") << some("@a.it@HD") << some("IT");
    QTest::newRow("only at signs") << some("@@") << some("@@");
    QTest::newRow("only dots") << some("..") << none;
    QTest::newRow("empty") << some("") << none;
}

void TestPlaylistParser::inferredCountryCode()
{
    QFETCH(std::optional<QString>, tvgID);
    QFETCH(std::optional<QString>, code);
    QCOMPARE(PlaylistParser::inferredCountryCode(tvgID), code);
}

void TestPlaylistParser::entryEqualityAndHashingTakeAllFields()
{
    const QUuid id = QUuid::createUuid();
    const QUrl url(u"http://h/x.ts"_s);
    const PlaylistEntry a(id, u"A"_s, url, QUrl(u"http://h/l.png"_s), u"G"_s, u"US"_s);
    const PlaylistEntry same(id, u"A"_s, url, QUrl(u"http://h/l.png"_s), u"G"_s, u"US"_s);
    QCOMPARE(a, same);
    QCOMPARE(qHash(a, 0), qHash(same, 0));

    const QList<PlaylistEntry> different {
        PlaylistEntry(QUuid::createUuid(), u"A"_s, url, QUrl(u"http://h/l.png"_s), u"G"_s, u"US"_s),
        PlaylistEntry(id, u"B"_s, url, QUrl(u"http://h/l.png"_s), u"G"_s, u"US"_s),
        PlaylistEntry(id, u"A"_s, QUrl(u"http://h/y.ts"_s), QUrl(u"http://h/l.png"_s), u"G"_s,
                      u"US"_s),
        PlaylistEntry(id, u"A"_s, url, std::nullopt, u"G"_s, u"US"_s),
        PlaylistEntry(id, u"A"_s, url, QUrl(u"http://h/l.png"_s), std::nullopt, u"US"_s),
        PlaylistEntry(id, u"A"_s, url, QUrl(u"http://h/l.png"_s), u"G"_s, std::nullopt),
    };
    QSet<PlaylistEntry> set {a};
    for (const PlaylistEntry &entry : different) {
        QVERIFY(entry != a);
        set.insert(entry);
    }
    QCOMPARE(set.size(), different.size() + 1);

    // Absent fields read back as absent, present ones as given.
    QCOMPARE(different[3].logoURL(), std::nullopt);
    QCOMPARE(a.logoURL(), QUrl(u"http://h/l.png"_s));
    QCOMPARE(different[5].countryCode(), std::nullopt);
}

void TestPlaylistParser::entriesKeepTheirTextsWhenTheListIsGone()
{
    // Enough channels for several shared blocks of texts, and one name too long to share one.
    QString text = u"#EXTM3U\n"_s;
    const QString longName(100000, u'n');
    for (int i = 0; i < 20000; ++i) {
        text += u"#EXTINF:-1 tvg-id=\"id%1\" tvg-logo=\"http://logos.example/%1.png\",%2\n"
                u"http://h.example/live/%1.ts\n"_s.arg(i)
                    .arg(i == 15001 ? longName : u"Channel %1"_s.arg(i));
    }
    QList<PlaylistEntry> kept;
    {
        const QList<PlaylistEntry> entries
            = PlaylistParser::parse(QByteArrayView(text.toUtf8()), base);
        QCOMPARE(entries.size(), 20000);
        for (qsizetype i = 0; i < entries.size(); i += 2500)
            kept.append(entries[i]);
        kept.append(entries[15001]);
    }
    QCOMPARE(kept.size(), 9);
    for (qsizetype k = 0; k < 8; ++k) {
        const qsizetype i = k * 2500;
        QCOMPARE(kept[k].name(), u"Channel %1"_s.arg(i));
        QCOMPARE(kept[k].tvgId(), u"id%1"_s.arg(i));
        QCOMPARE(kept[k].url(), QUrl(u"http://h.example/live/%1.ts"_s.arg(i)));
        QCOMPARE(kept[k].logoURL(), QUrl(u"http://logos.example/%1.png"_s.arg(i)));
    }
    QCOMPARE(kept[8].name(), longName);
    QCOMPARE(kept[8].url(), QUrl(u"http://h.example/live/15001.ts"_s));
}

void TestPlaylistParser::errorTexts()
{
    QCOMPARE(playlistErrorDescription(PlaylistError::invalidEncoding),
             u"The playlist text could not be read."_s);
    QCOMPARE(playlistErrorDescription(PlaylistError::empty),
             u"No playable address was found in the playlist."_s);
}

QTEST_GUILESS_MAIN(TestPlaylistParser)
#include "tst_playlistparser.moc"
