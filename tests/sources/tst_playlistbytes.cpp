// Reading a playlist straight from its bytes gives exactly what decoding the whole text first
// gives: the same channels, names, addresses, groups, countries and request headers.

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <stop_token>

namespace {

// The entries as text, identifiers left out: each parse makes fresh ones.
QStringList described(const QList<PlaylistEntry> &entries)
{
    QStringList lines;
    for (const PlaylistEntry &entry : entries) {
        lines.append(QStringList {entry.name(), QString::fromLatin1(entry.encodedUrl()),
                                  QString::fromLatin1(entry.encodedLogoURL()),
                                  entry.groupTitle().value_or(QStringLiteral("<none>")),
                                  entry.countryCode().value_or(QStringLiteral("<none>")),
                                  entry.headers().userAgent, entry.headers().referrer}
                         .join(u'|'));
    }
    return lines;
}

void compareBothWays(const QByteArray &bytes, const QUrl &base)
{
    const QStringList fromText = described(PlaylistParser::parse(decodePlaylistText(bytes), base));
    const QStringList fromBytes = described(PlaylistParser::parse(QByteArrayView(bytes), base));
    QCOMPARE(fromBytes, fromText);
}

// Big enough to be read in two parts at once, with every corpus quirk repeated.
QByteArray largeCorpusList()
{
    const QDir corpus(QStringLiteral(LUMO_CORPUS_DIR "/m3u"));
    QByteArray bytes;
    while (bytes.size() < 4 * 1024 * 1024) {
        for (const QString &name : corpus.entryList(QDir::Files)) {
            QFile file(corpus.filePath(name));
            if (!file.open(QIODevice::ReadOnly))
                qFatal("cannot read %s", qPrintable(file.fileName()));
            QByteArray body = file.readAll();
            if (body.startsWith("\xEF\xBB\xBF"))
                body.remove(0, 3);
            bytes += body + "\n#EXTVLCOPT:http-user-agent=Part\xC2\x85";
        }
    }
    return bytes;
}

} // namespace

class TestPlaylistBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tricky_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("only newlines") << QByteArray("\n\r\n\r\r\n\x0b\x0c");
        QTest::newRow("byte-order mark")
            << QByteArray("\xEF\xBB\xBF#EXTM3U\n#EXTINF:-1,A\nhttp://a/1\n");
        QTest::newRow("byte-order mark only") << QByteArray("\xEF\xBB\xBFhttp://a/1");
        QTest::newRow("mark inside a name")
            << QByteArray("#EXTINF:-1,\xEF\xBB\xBFName\nhttp://a/8\n");
        QTest::newRow("next line as a line break")
            << QByteArray("#EXTINF:-1,A\xC2\x85http://a/1\n");
        QTest::newRow("line and paragraph separators")
            << QByteArray("#EXTINF:-1,B\xE2\x80\xA8http://a/2\xE2\x80\xA9#EXTINF:-1,C\nhttp://a/3");
        QTest::newRow("no-break spaces around")
            << QByteArray("#EXTINF:-1,\xC2\xA0Name\xC2\xA0\n\xC2\xA0http://a/5\xC2\xA0\n"
                          "\xE3\x80\x80http://a/6\xE2\x80\x83\n");
        QTest::newRow("CR LF and tabs") << QByteArray("#EXTINF:-1,T\r\n\thttp://a/9\t\r\n");
        // Plain address lines are read as bytes; blank ones and comments are not addresses.
        QTest::newRow("blank lines first")
            << QByteArray("\n \n\t\n#EXTINF:-1,B\n \t \n  http://a/1 \t\n");
        QTest::newRow("indented comment") << QByteArray("#EXTINF:-1,C\n \t#http://a/1\nhttp://a/2");
        QTest::newRow("address with control characters")
            << QByteArray("#EXTINF:-1,D\n\x01http://a/1\x1f\n\x7fhttp://a/2\n");
        QTest::newRow("addresses QUrl has to read")
            << QByteArray("#EXTINF:-1,E\nhttp://A/x y\n#EXTINF:-1,F\n../up/z\nrtmp://h/l\n");
        QTest::newRow("Latin-1") << QByteArray("#EXTINF:-1,Caf\xE9\nhttp://a/3\n");
        QTest::newRow("Latin-1 next line")
            << QByteArray("#EXTINF:-1,X\x85http://a/4\n#EXTINF:-1,\xA0Y\xA0\nhttp://a/5");
        QTest::newRow("Latin-1 after a mark")
            << QByteArray("\xEF\xBB\xBF#EXTINF:-1,Caf\xE9\nhttp://a/3\n");
        QTest::newRow("sequence cut by a line end") << QByteArray("#EXTINF:-1,A\xC3\nhttp://a/7");
        QTest::newRow("sequence cut at the end") << QByteArray("#EXTINF:-1,A\nhttp://a/7\xE2\x80");
        QTest::newRow("surrogate in UTF-8") << QByteArray("#EXTINF:-1,\xED\xA0\x80\nhttp://a/1");
        QTest::newRow("long s in an attribute name")
            << QByteArray("#EXTINF:-1 http-u\xC5\xBF"
                          "er-agent=\"UA\",N\nhttp://a/6\n");
        QTest::newRow("Kelvin sign and accents in attributes")
            << QByteArray("#EXTINF:-1 tvg-n\xC3\xA4me=\"x\" group-title=\"K\xE2\x84\xAA\" "
                          "tvg-country=\"\xC3\xA9s\",\nhttp://a/6\n");
        QTest::newRow("headers") << QByteArray(
            "#EXTVLCOPT:http-user-agent=UA 1\n#EXTINF:-1 http-referrer=\"r\xC3\xA9\",A\n"
            "http://a/1\n#EXTINF:-1,B\nhttp://a/2\n");
        QTest::newRow("nul bytes") << QByteArray("#EXTINF:-1,A\0B\nhttp://a/\0\n", 26);
        QTest::newRow("relative and odd addresses") << QByteArray(
            "#EXTINF:-1,R\nlive/1.ts\n#EXTINF:-1,S\n//host/x\n[::1]\nhttp://[::1]:8/a\n");
    }

    void tricky()
    {
        QFETCH(QByteArray, bytes);
        compareBothWays(bytes, QUrl(QStringLiteral("http://provider.example/list.m3u")));
    }

    // Names in every script, and now and then a byte sequence that is not UTF-8: read line by
    // line, the list gives what decoding it whole gives.
    void randomNamesInEveryScript()
    {
        const QList<QByteArray> valid {"a",
                                       "Name ",
                                       "\xC3\xA9",
                                       "\xD0\x9A",
                                       "\xE6\x96\xB0",
                                       "\xF0\x9F\x98\x80",
                                       "\xEF\xBB\xBF",
                                       "\xEF\xBF\xBF",
                                       "\xF4\x8F\xBF\xBF",
                                       "\xE2\x80\xA8",
                                       "\xC2\x85",
                                       "\xC2\xA0",
                                       "0123456789"};
        const QList<QByteArray> invalid {"\xC0\x80",     "\xC1\xBF",
                                         "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                         "\xE0\x80\xAF", "\xF0\x80\x80\x80",
                                         "\x80",         "\xC3",
                                         "\xE6\x96",     "\xF8\x88\x80\x80\x80",
                                         "\xFF"};
        QRandomGenerator random(20261126);
        const QUrl base(QStringLiteral("http://provider.example/list.m3u"));
        for (int list = 0; list < 2000; ++list) {
            QByteArray bytes = "#EXTM3U\n";
            for (int line = 0; line < 8; ++line) {
                QByteArray name;
                for (int k = random.bounded(12); k > 0; --k)
                    name += valid[random.bounded(int(valid.size()))];
                if (random.bounded(40) == 0)
                    name.insert(random.bounded(int(name.size()) + 1),
                                invalid[random.bounded(int(invalid.size()))]);
                bytes += "#EXTINF:-1 tvg-name=\"" + name + "\"," + name + "\nhttp://a/"
                    + QByteArray::number(line) + "\n";
            }
            compareBothWays(bytes, base);
            if (QTest::currentTestFailed()) {
                qWarning("list: %s", bytes.toHex().constData());
                return;
            }
        }
    }

    // Lines are widened many bytes at a time up to what is not ASCII: each sequence, valid or
    // not, at every place in and across such a stretch reads as decoding the whole text does.
    void everySequenceAtEveryPlace()
    {
        const QList<QByteArray> sequences {"\xC3\xA9",     "\xE6\x96\xB0", "\xF0\x9F\x98\x80",
                                           "\xEF\xBB\xBF", "\xC2\x85",     "\xE2\x80\xA8",
                                           "\xC0\x80",     "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                           "\xE0\x80\xAF", "\x80",         "\xC3",
                                           "\xE6\x96",     "\xFF"};
        const QUrl base(QStringLiteral("http://provider.example/list.m3u"));
        for (const QByteArray &sequence : sequences) {
            for (int before = 0; before < 40; ++before) {
                const QByteArray name = QByteArray(before, 'x') + sequence + "\xC3\xA9"
                    + QByteArray(before % 19, 'y');
                // Within the list, then at its very end, which is read apart.
                compareBothWays("#EXTINF:-1," + name + "\nhttp://a/1\n", base);
                compareBothWays("#EXTINF:-1,a\nhttp://a/1\n#EXTINF:-1," + name, base);
                if (QTest::currentTestFailed()) {
                    qWarning("name: %s", name.toHex().constData());
                    return;
                }
            }
        }
    }

    void everyCorpusFile()
    {
        const QDir corpus(QStringLiteral(LUMO_CORPUS_DIR "/m3u"));
        if (!corpus.exists())
            QFAIL("the shared playlist corpus is missing beside the repository");
        for (const QString &name : corpus.entryList(QDir::Files)) {
            QFile file(corpus.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            compareBothWays(file.readAll(), QUrl::fromLocalFile(file.fileName()));
            if (QTest::currentTestFailed())
                qWarning("differs: %s", qPrintable(name));
        }
    }

    void largeListsReadInParts_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("tail");
        QTest::newRow("UTF-8") << QByteArray()
                               << QByteArray("#EXTINF:-1,T\xC3\xA9l\xC3\xA9\nhttp://a/e\n");
        // One stray byte far into the list turns the whole list into Latin-1.
        QTest::newRow("Latin-1 at the end")
            << QByteArray() << QByteArray("#EXTINF:-1,T\xE9l\xE9\nhttp://a/e\n");
        // What the end of a list leaves pending belongs to no entry, whichever part is read
        // first.
        QTest::newRow("options left pending at the end")
            << QByteArray()
            << QByteArray("#EXTINF:-1,E\nhttp://a/e\n#EXTVLCOPT:http-user-agent=Dangling\n"
                          "#EXTINF:-1 http-referrer=\"d\",Dangling\n");
        // The room for the entries is guessed from the first part read: a start with far
        // fewer channels than the rest guesses far too little, one with far more too much.
        const QByteArray remarks = QByteArray("# a remark of the list's maker\n").repeated(60000);
        QTest::newRow("a sparse start")
            << "#EXTINF:-1,First\nhttp://a/first\n" + remarks << QByteArray();
        QTest::newRow("a sparse end")
            << QByteArray() << remarks + "#EXTINF:-1,Last\nhttp://a/last\n";
        QTest::newRow("sparse at both ends") << "#EXTINF:-1,First\nhttp://a/first\n" + remarks
                                             << remarks + "#EXTINF:-1,Last\nhttp://a/last\n";
        QByteArray dense;
        for (int i = 0; i < 60000; ++i)
            dense += "#EXTINF:-1,D" + QByteArray::number(i) + "\nd/" + QByteArray::number(i) + '\n';
        QTest::newRow("a dense start") << dense << QByteArray();
        QTest::newRow("dense at both ends") << dense << dense;
    }

    void largeListsReadInParts()
    {
        QFETCH(QByteArray, head);
        QFETCH(QByteArray, tail);
        const QByteArray bytes = head + largeCorpusList() + tail;
        compareBothWays(bytes, QUrl(QStringLiteral("http://provider.example/list.m3u")));
    }

    void theParserReportsTheBytesItHasReadAsItGoes_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::newRow("UTF-8") << QByteArray();
        QTest::newRow("UTF-8 with a byte-order mark") << QByteArray("\xEF\xBB\xBF");
    }

    void theParserReportsTheBytesItHasReadAsItGoes()
    {
        // A caller that mapped a file lets go of what is read; every byte is reported once.
        QFETCH(QByteArray, head);
        const QByteArray bytes = head + largeCorpusList();
        const QUrl base(QStringLiteral("http://provider.example/list.m3u"));
        QMutex mutex;
        QList<std::pair<qsizetype, qsizetype>> spans;
        const QList<PlaylistEntry> entries
            = PlaylistParser::parse(QByteArrayView(bytes), base, [&](QByteArrayView read) {
                  const QMutexLocker locker(&mutex);
                  spans.append({read.data() - bytes.constData(), read.size()});
              });
        QCOMPARE(described(entries), described(PlaylistParser::parse(QByteArrayView(bytes), base)));
        std::sort(spans.begin(), spans.end());
        QVERIFY2(spans.size() >= 4, "the bytes are reported as they are read, not all at the end");
        qsizetype next = 0;
        for (const auto &[start, size] : spans) {
            QCOMPARE(start, next);
            QVERIFY(size > 0);
            next = start + size;
        }
        QCOMPARE(next, bytes.size());
    }

    void aStoppedParseEndsWithoutReadingOn()
    {
        // Quitting stops a parse under way: once asked, it reads no further than the few
        // thousand lines between its checks.
        const QByteArray bytes = largeCorpusList().repeated(4);
        const QUrl base(QStringLiteral("http://provider.example/list.m3u"));
        const qsizetype all = PlaylistParser::parse(QByteArrayView(bytes), base).size();
        std::stop_source stop;
        QMutex mutex;
        qsizetype readAfterStop = 0;
        const QList<PlaylistEntry> entries = PlaylistParser::parse(
            QByteArrayView(bytes), base,
            [&](QByteArrayView read) {
                const QMutexLocker locker(&mutex);
                if (stop.stop_requested())
                    readAfterStop += read.size();
                stop.request_stop();
            },
            stop.get_token());
        QVERIFY2(entries.size() < all / 2, qPrintable(QString::number(entries.size())));
        // Each of the two halves may report the stretch it was in when the stop came.
        QVERIFY2(readAfterStop <= 2 * 1.1 * (1 << 20), qPrintable(QString::number(readAfterStop)));

        std::stop_source stopped;
        stopped.request_stop();
        QVERIFY(
            PlaylistParser::parse(QByteArrayView(bytes), base, {}, stopped.get_token()).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestPlaylistBytes)
#include "tst_playlistbytes.moc"
