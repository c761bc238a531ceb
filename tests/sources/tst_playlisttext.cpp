#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPlaylistText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void utf8IsDecoded();
    void byteOrderMarkIsDropped();
    void invalidUtf8FallsBackToLatin1WithAccentsIntact();
    void byteOrderMarkIsDroppedBeforeTheLatin1Fallback();
    void nulBytesAreKept();
    void emptyBytesGiveEmptyText();
};

void TestPlaylistText::utf8IsDecoded()
{
    QCOMPARE(decodePlaylistText(QByteArray("#EXTINF:-1,\xD0\x9D\xD0\xA2\xD0\x92 \xE4\xB8\xAD")),
             u"#EXTINF:-1,НТВ 中"_s);
}

void TestPlaylistText::byteOrderMarkIsDropped()
{
    const QString text = decodePlaylistText(QByteArray("\xEF\xBB\xBF#EXTM3U\nhttp://h/a.ts\n"));
    QVERIFY(text.startsWith(u"#EXTM3U"));
    // Kept, the mark would turn the header into an address line.
    QCOMPARE(PlaylistParser::parse(text, QUrl(u"http://h/x.m3u"_s)).size(), 1);
}

void TestPlaylistText::invalidUtf8FallsBackToLatin1WithAccentsIntact()
{
    // "Télé Café" in ISO Latin-1: E9 alone is not valid UTF-8.
    const QByteArray latin1("#EXTINF:-1,T\xE9l\xE9 Caf\xE9\nhttp://h/a.ts\n");
    const QString text = decodePlaylistText(latin1);
    QVERIFY(text.contains(u"Télé Café"));
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, QUrl(u"http://h/x.m3u"_s));
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Télé Café"_s);
}

void TestPlaylistText::byteOrderMarkIsDroppedBeforeTheLatin1Fallback()
{
    // A UTF-8 file with its mark, and one stray Latin-1 byte further on.
    const QByteArray bytes("\xEF\xBB\xBF#EXTM3U\n#EXTINF:-1,Caf\xE9\nhttp://h/a.ts\n");
    const QString text = decodePlaylistText(bytes);
    QVERIFY(text.startsWith(u"#EXTM3U"));
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, QUrl(u"http://h/x.m3u"_s));
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Café"_s);
}

void TestPlaylistText::nulBytesAreKept()
{
    const QByteArray bytes("#EXTINF:-1,A\0B\nhttp://h/a.ts\n", 29);
    const QString text = decodePlaylistText(bytes);
    QCOMPARE(text.size(), 29);
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, QUrl(u"http://h/x.m3u"_s));
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), QString(u"A\0B"_s));
}

void TestPlaylistText::emptyBytesGiveEmptyText()
{
    QVERIFY(decodePlaylistText(QByteArray()).isEmpty());
}

QTEST_GUILESS_MAIN(TestPlaylistText)
#include "tst_playlisttext.moc"
