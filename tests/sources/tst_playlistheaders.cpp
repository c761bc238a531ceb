// Channels that only play with the request headers their playlist names: #EXTVLCOPT lines and
// http-user-agent / http-referrer attributes, kept with the entry they belong to.
#include "sources/playlistparser.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QUrl base(QStringLiteral("http://lists.example/tv/index.m3u"));

QList<PlaylistEntry> parse(const QString &text)
{
    return PlaylistParser::parse(text, base);
}

} // namespace

class TestPlaylistHeaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void vlcOptionsBelongToTheNextAddress()
    {
        const QList<PlaylistEntry> entries
            = parse(u"#EXTM3U\r\n#EXTINF:-1,One\r\n#EXTVLCOPT:http-user-agent=ExoPlayer2/2.37\r\n"
                    "#EXTVLCOPT:http-referrer=https://site.example/page\r\n"
                    "http://h/one.m3u8\r\n#EXTINF:-1,Two\r\nhttp://h/two.m3u8\r\n"_s);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].headers().userAgent, "ExoPlayer2/2.37");
        QCOMPARE(entries[0].headers().referrer, "https://site.example/page");
        // Options end with the address they were given for.
        QVERIFY(entries[1].headers().isEmpty());
        QVERIFY(entries[1].headers().userAgent.isNull());
    }

    void optionsBeforeTheExtinfLineCount()
    {
        const QList<PlaylistEntry> entries
            = parse(u"#EXTVLCOPT:http-user-agent=Agent 1.0\n#EXTINF:-1,One\nhttp://h/one.ts\n"_s);
        QCOMPARE(entries.size(), 1);
        QCOMPARE(entries[0].name(), "One");
        QCOMPARE(entries[0].headers().userAgent, "Agent 1.0");
    }

    void extinfAttributesCount()
    {
        const QList<PlaylistEntry> entries
            = parse(u"#EXTINF:-1 http-user-agent=\"Mozilla/5.0 (X11)\" "
                    "http-referrer=\"http://r.example/\" group-title=\"News\",One\nhttp://h/1.ts\n"
                    "#EXTINF:-1 http-user-agent=\"Quoted\",Two\n"
                    "#EXTVLCOPT:http-user-agent=Line wins\nhttp://h/2.ts\n"_s);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].headers().userAgent, "Mozilla/5.0 (X11)");
        QCOMPARE(entries[0].headers().referrer, "http://r.example/");
        QCOMPARE(entries[0].groupTitle(), "News");
        QCOMPARE(entries[1].headers().userAgent, "Line wins");
    }

    void otherOptionsAndEmptyValuesAreIgnored()
    {
        const QList<PlaylistEntry> entries
            = parse(u"#EXTINF:-1,One\n#EXTVLCOPT:network-caching=1000\n"
                    "#EXTVLCOPT:http-user-agent=\n#EXTVLCOPT:HTTP-REFERRER=http://r/\n"
                    "http://h/1.ts\n"_s);
        QCOMPARE(entries.size(), 1);
        QVERIFY(entries[0].headers().userAgent.isNull());
        QCOMPARE(entries[0].headers().referrer, "http://r/");
    }

    void controlCharactersAreLeftOutOfHeaders()
    {
        // A NUL, an escape or a tab would cut or corrupt the request mpv sends.
        QString text = u"#EXTM3U\n#EXTINF:-1 http-user-agent=\"Agent@1.0\",One\n"
                       "#EXTVLCOPT:http-referrer=http://r.example/@page\nhttp://h/1.ts\n"
                       "#EXTINF:-1,Two\n#EXTVLCOPT:http-user-agent=Vlc\x1b[2J/3.0\t\n"
                       "#EXTVLCOPT:http-referrer=@\nhttp://h/2.ts\n"_s;
        text.replace(u'@', QChar(u'\0'));
        const QList<PlaylistEntry> entries = parse(text);
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].headers().userAgent, "Agent1.0");
        QCOMPARE(entries[0].headers().referrer, "http://r.example/page");
        QCOMPARE(entries[1].headers().userAgent, "Vlc[2J/3.0");
        // Nothing but control characters is no header at all.
        QVERIFY(entries[1].headers().referrer.isNull());
    }

    void largeListsKeepEveryEntrysHeaders()
    {
        // Over a million characters: read in two parts at once, which must not separate
        // headers from the address they precede.
        QString text = u"#EXTM3U\n"_s;
        constexpr int count = 30'000;
        for (int i = 0; i < count; ++i)
            text += QStringLiteral("#EXTVLCOPT:http-user-agent=Agent %1\n#EXTINF:-1,Name %1\n"
                                   "http://h/%1.ts\n")
                        .arg(i);
        QVERIFY(text.size() > 1 << 20);
        const QList<PlaylistEntry> entries = parse(text);
        QCOMPARE(entries.size(), count);
        for (int i = 0; i < count; ++i)
            QCOMPARE(entries[i].headers().userAgent, QStringLiteral("Agent %1").arg(i));
    }

    // A provider list repeats a few sets of options, taking turns: each set is kept once, and
    // a header value once, however the sets around it differ.
    void repeatedOptionsAreKeptOnce()
    {
        QString text = u"#EXTM3U\n"_s;
        constexpr int count = 64;
        const QString kinds[] {u" catchup=\"flussonic\""_s, u" catchup=\"xc\" catchup-days=\"3\""_s,
                               u""_s, u" http-referrer=\"https://site.example/\""_s};
        for (int i = 0; i < count; ++i) {
            text += QStringLiteral("#EXTINF:-1 http-user-agent=\"Tizen 6.0\"%1,Name %2\n"
                                   "http://h/%2.ts\n")
                        .arg(kinds[i % 4])
                        .arg(i);
        }
        for (const bool large : {false, true}) {
            // Over a million characters, a list is read in two parts at once, each keeping its
            // own copies.
            const QString listed = large
                ? u"#EXTM3U\n#"_s + QString(1 << 20, u'x') + text.sliced(text.indexOf(u'\n'))
                : text;
            const QList<PlaylistEntry> entries = parse(listed);
            QCOMPARE(entries.size(), count);
            for (int i = 8; i < count; ++i) {
                QCOMPARE(entries[i].headers().userAgent, u"Tizen 6.0"_s);
                QCOMPARE(&entries[i].headers(), &entries[i - 4].headers());
                QCOMPARE(entries[i].headers().userAgent.constData(),
                         entries[4].headers().userAgent.constData());
            }
            QCOMPARE(entries[0].catchup()->mode, CatchupMode::flussonic);
            QCOMPARE(entries[1].catchup()->days, 3);
            QVERIFY(!entries[2].catchup());
            QCOMPARE(entries[3].headers().referrer, u"https://site.example/"_s);
        }
    }

    void headersLeaveEqualityAlone()
    {
        const QList<PlaylistEntry> entries
            = parse(u"#EXTINF:-1,One\n#EXTVLCOPT:http-user-agent=A\nhttp://h/1.ts\n"_s);
        const PlaylistEntry &entry = entries[0];
        const PlaylistEntry plain(entry.id(), entry.name(), entry.url(), entry.logoURL(),
                                  entry.groupTitle(), entry.countryCode());
        QVERIFY(plain.headers().isEmpty());
        QVERIFY(plain == entry);
        QCOMPARE(qHash(plain, 7), qHash(entry, 7));
    }

    void theRealCorpusKeepsItsHeaders()
    {
        QFile file(QStringLiteral(LUMO_CORPUS_DIR "/m3u/iptv-org_iptv__streams_us.m3u"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        const QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
        const qsizetype agentLines = text.count(u"#EXTVLCOPT:http-user-agent=");
        const qsizetype referrerLines = text.count(u"#EXTVLCOPT:http-referrer=");
        QVERIFY(agentLines > 0);
        QVERIFY(referrerLines > 0);
        qsizetype agents = 0, referrers = 0;
        for (const PlaylistEntry &entry : entries) {
            agents += entry.headers().userAgent.isEmpty() ? 0 : 1;
            referrers += entry.headers().referrer.isEmpty() ? 0 : 1;
        }
        QCOMPARE(agents, agentLines);
        QCOMPARE(referrers, referrerLines);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistHeaders)
#include "tst_playlistheaders.moc"
