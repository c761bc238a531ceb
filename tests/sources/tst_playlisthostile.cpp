// Hostile playlist text: whatever comes in, the parser returns without crashing or hanging, and
// what it keeps stays proportional to what it read.

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QSet>
#include <QTest>

#include <malloc.h>

using namespace Qt::StringLiterals;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LUMO_SANITIZER_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define LUMO_SANITIZER_ALLOCATOR 1
#endif
#endif
#ifdef LUMO_SANITIZER_ALLOCATOR
// From the sanitizer runtime (GCC ships no header for it).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

// Bytes allocated on the heap right now (the sanitizers' allocator replaces glibc's).
size_t allocatedBytes()
{
#ifdef LUMO_SANITIZER_ALLOCATOR
    return __sanitizer_get_current_allocated_bytes();
#else
    malloc_trim(0);
    return mallinfo2().uordblks;
#endif
}

const QUrl base(QStringLiteral("http://h.example/list.m3u"));

QString channels(int count)
{
    QString text = QStringLiteral("#EXTM3U\n");
    text.reserve(count * 96);
    for (int i = 0; i < count; ++i) {
        text += QStringLiteral("#EXTINF:-1 tvg-id=\"c%1.us\" group-title=\"Group %2\",Channel %1\n"
                               "http://h.example/live/%1/index.m3u8\n")
                    .arg(i)
                    .arg(i % 40);
    }
    return text;
}

// Bytes the parsed entries hold on the heap, entries list included.
qsizetype heldBytesPerEntry(int count)
{
    const QString text = channels(count);
    const size_t before = allocatedBytes();
    QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
    entries.squeeze();
    const size_t after = allocatedBytes();
    if (entries.size() != count)
        qFatal("expected %d entries, got %lld", count, static_cast<long long>(entries.size()));
    return qsizetype(after - before) / count;
}

} // namespace

class TestPlaylistHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyText();
    void onlyNewlines();
    void blankListsClaimLittleAddressSpace();
    void aDenseStartClaimsLittleAddressSpace();
    void fiftyMegabyteAddressLine();
    void fiftyMegabyteLineOfNoAddress();
    void nulBytes();
    void invalidUtf8Bytes();
    void hundredThousandCharacterExtinf();
    void unterminatedQuotes();
    void tenThousandCommas();
    void millionEntriesStayProportional();
    void largeListsReadInPartsMatchALineByLineRead();
};

void TestPlaylistHostile::emptyText()
{
    QVERIFY(PlaylistParser::parse(decodePlaylistText(QByteArray()), base).isEmpty());
}

void TestPlaylistHostile::onlyNewlines()
{
    QVERIFY(PlaylistParser::parse(QString(100000, u'\n'), base).isEmpty());
    QVERIFY(PlaylistParser::parse(QString(100000, u'\r'), base).isEmpty());
}

// Room for a list's entries is claimed before it is read, from a guess at how many it holds:
// 64 MB of line breaks, which hold none, claim no more than about 90 MB of address space.
void TestPlaylistHostile::blankListsClaimLittleAddressSpace()
{
    const QByteArray blank(64 * 1024 * 1024, '\n');
    for (const QList<PlaylistEntry> &entries :
         {PlaylistParser::parse(QByteArrayView(blank), base),
          PlaylistParser::parse(decodePlaylistText(blank), base)}) {
        QVERIFY(entries.isEmpty());
        const qsizetype claimed = entries.capacity() * qsizetype(sizeof(PlaylistEntry));
        QVERIFY2(claimed <= 96 * 1024 * 1024, qPrintable(QString::number(claimed)));
    }
}

void TestPlaylistHostile::fiftyMegabyteAddressLine()
{
    const qsizetype length = 50 * 1024 * 1024;
    QString line = QStringLiteral("#EXTINF:-1,Big\nhttp://h.example/");
    line += QString(length, u'a');
    const QList<PlaylistEntry> entries = PlaylistParser::parse(line, base);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Big"_s);
    QCOMPARE(entries[0].encodedUrl().size(), length + 17);
}

void TestPlaylistHostile::fiftyMegabyteLineOfNoAddress()
{
    // A host that cannot be one: the line is skipped.
    QString line = QStringLiteral("http://");
    line += QString(50 * 1024 * 1024, u' ');
    line += QStringLiteral("x/");
    QVERIFY(PlaylistParser::parse(line, base).isEmpty());
}

void TestPlaylistHostile::nulBytes()
{
    QByteArray bytes(1024, '\0');
    bytes += "\n#EXTINF:-1,A\nhttp://h/a.ts\n";
    bytes += QByteArray(1024, '\0');
    const QList<PlaylistEntry> entries = PlaylistParser::parse(decodePlaylistText(bytes), base);
    // Each run of NULs is a line that is not a directive, so it is a (relative) address.
    QCOMPARE(entries.size(), 3);
    QCOMPARE(entries[1].name(), u"A"_s);
}

void TestPlaylistHostile::invalidUtf8Bytes()
{
    QByteArray bytes("#EXTINF:-1,\xC3\x28\xFF\xFE\n");
    bytes += "http://h/\xE9t\xE9.ts\n";
    const QList<PlaylistEntry> entries = PlaylistParser::parse(decodePlaylistText(bytes), base);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), QString::fromLatin1("\xC3\x28\xFF\xFE"));
    QCOMPARE(entries[0].encodedUrl(), QByteArray("http://h/%C3%A9t%C3%A9.ts"));
}

void TestPlaylistHostile::hundredThousandCharacterExtinf()
{
    QString line = QStringLiteral("#EXTINF:-1 tvg-logo=\"http://h/");
    line += QString(100000, u'x');
    line += QStringLiteral("\" group-title=\"G\",Long\nhttp://h/a.ts");
    const QList<PlaylistEntry> entries = PlaylistParser::parse(line, base);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), u"Long"_s);
    QCOMPARE(entries[0].groupTitle(), u"G"_s);
    QCOMPARE(entries[0].encodedLogoURL().size(), 100009);
}

void TestPlaylistHostile::unterminatedQuotes()
{
    const QList<PlaylistEntry> entries = PlaylistParser::parse(
        u"#EXTINF:-1 tvg-logo=\"http://h/l.png group-title=\"G,Name\nhttp://h/a.ts\n"
        "#EXTINF:-1 tvg-name=\"unclosed\nhttp://h/b.ts"_s,
        base);
    QCOMPARE(entries.size(), 2);
    // The logo value runs to the next quote (its space is percent-encoded); the group search
    // finds the text inside the logo value, whose quote is never closed, so there is no group;
    // the name is what follows the first comma.
    QCOMPARE(entries[0].logoURL(), QUrl(u"http://h/l.png%20group-title="_s));
    QCOMPARE(entries[0].groupTitle(), std::nullopt);
    QCOMPARE(entries[0].name(), u"Name"_s);
    QCOMPARE(entries[1].name(), u"#EXTINF:-1 tvg-name=\"unclosed"_s);
}

void TestPlaylistHostile::tenThousandCommas()
{
    QString line = QStringLiteral("#EXTINF:-1 tvg-name=\"A\"");
    line += QString(10000, u',');
    line += QStringLiteral("\nhttp://h/a.ts");
    const QList<PlaylistEntry> entries = PlaylistParser::parse(line, base);
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries[0].name(), QString(9999, u','));
}

// A large list's room is also guessed from the first of its parts read: two megabytes of
// channels before 63 MB of line breaks must not claim room for the three million entries that
// such a start foretells.
void TestPlaylistHostile::aDenseStartClaimsLittleAddressSpace()
{
    const QByteArray channel("#EXTINF:-1,a\nhttp://h/a\n");
    const int channels = 2 * 1024 * 1024 / int(channel.size());
    const QByteArray bytes = channel.repeated(channels) + QByteArray(63 * 1024 * 1024, '\n');
    const QList<PlaylistEntry> entries = PlaylistParser::parse(QByteArrayView(bytes), base);
    QCOMPARE(entries.size(), channels);
    const qsizetype claimed = entries.capacity() * qsizetype(sizeof(PlaylistEntry));
    QVERIFY2(claimed <= 96 * 1024 * 1024, qPrintable(QString::number(claimed)));
}

void TestPlaylistHostile::millionEntriesStayProportional()
{
    const qsizetype small = heldBytesPerEntry(100000);
    const qsizetype large = heldBytesPerEntry(1000000);
    qInfo("bytes held per entry: %lld for 100,000 entries, %lld for 1,000,000",
          static_cast<long long>(small), static_cast<long long>(large));
    QVERIFY(small > 0);
    QVERIFY2(large <= small * 5 / 4, "memory per entry grows with the playlist's size");
}

void TestPlaylistHostile::largeListsReadInPartsMatchALineByLineRead()
{
    // Large texts are read in two parts at an #EXTINF line. Records here carry their details
    // across skipped lines and directives, and some addresses have no #EXTINF at all, so a part
    // that began anywhere else would give wrong names, groups or counts.
    QString text;
    const int records = 30000;
    for (int i = 0; i < records; ++i) {
        if (i % 7 == 3) {
            text += QStringLiteral("http://h.example/plain/%1.ts\r\n").arg(i);
            continue;
        }
        text += QStringLiteral("#EXTINF:-1 group-title=\"G%1\",Name %1\r\n").arg(i);
        if (i % 5 == 0)
            text += QStringLiteral("http://bad host/%1\r\n#EXTVLCOPT:x=%1\r\n").arg(i);
        text += QStringLiteral("  http://h.example/live/%1.m3u8\r\n\r\n").arg(i);
    }
    QVERIFY(text.size() > 2 * 1024 * 1024);
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
    QCOMPARE(entries.size(), records);
    for (int i = 0; i < records; ++i) {
        const PlaylistEntry &entry = entries[i];
        if (i % 7 == 3) {
            QCOMPARE(entry.name(), QString::number(i));
            QCOMPARE(entry.groupTitle(), std::nullopt);
        } else {
            QCOMPARE(entry.name(), QStringLiteral("Name %1").arg(i));
            QCOMPARE(entry.groupTitle(), QStringLiteral("G%1").arg(i));
            QCOMPARE(entry.encodedUrl(),
                     QStringLiteral("http://h.example/live/%1.m3u8").arg(i).toLatin1());
        }
    }
    QSet<QUuid> ids;
    for (const PlaylistEntry &entry : entries)
        ids.insert(entry.id());
    QCOMPARE(ids.size(), records);
}

QTEST_GUILESS_MAIN(TestPlaylistHostile)
#include "tst_playlisthostile.moc"
