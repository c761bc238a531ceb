// A guide fed as its bytes come: the unpacked-size limit, and what the user is told at the end.
#include "guide/guidefeed.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray gzip(const QByteArray &input)
{
    QProcess process;
    process.start(u"gzip"_s, {u"-c"_s});
    process.waitForStarted();
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return process.readAllStandardOutput();
}

const QByteArray guide = "<tv><channel id=\"a\"><display-name>A</display-name></channel>"
                         "<programme channel=\"a\" start=\"20261125200000 +0000\" "
                         "stop=\"20261125210000 +0000\"><title>One</title></programme>"
                         "<programme channel=\"a\" start=\"tonight\"><title>Bad</title></programme>"
                         "<programme channel=\"a\" start=\"20261125210000 +0000\" stop=\"later\">"
                         "<title>Bad too</title></programme></tv>";

QStringList noticesOf(const QByteArray &bytes, qint64 limit = GuideFeed::defaultMaxUnpackedBytes)
{
    GuideFeed feed(u"g.xml"_s, {}, limit);
    for (qsizetype at = 0; at < bytes.size(); at += 7)
        if (!feed.feed(QByteArrayView(bytes).sliced(at, std::min<qsizetype>(7, bytes.size() - at))))
            break;
    feed.finish();
    return feed.notices();
}

} // namespace

class TestGuideFeed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void programmesWithUnreadableTimesAreCounted()
    {
        QCOMPARE(noticesOf(guide),
                 QStringList {u"2 programmes of “g.xml” have times that cannot be read and are "
                              "left out."_s});
        QByteArray one = guide;
        one.replace("stop=\"later\"", "stop=\"20261125220000\"");
        QCOMPARE(noticesOf(one),
                 QStringList {u"1 programme of “g.xml” has a time that cannot be "
                              "read and is left out."_s});
    }

    void theLimitIsSaidInItsUnit()
    {
        const QByteArray big = "<tv>" + QByteArray(3 << 20, ' ') + "</tv>";
        QCOMPARE(noticesOf(big, 2 << 20),
                 QStringList {u"The programme guide “g.xml” is larger than 2 MB unpacked: only "
                              "its first 2 MB are used."_s});
        const QByteArray packed = gzip(big);
        GuideFeed feed(u"g.xml"_s, {}, 1 << 20);
        QVERIFY(!feed.feed(packed));
        QVERIFY(feed.limitReached());
        QCOMPARE(GuideFeed::defaultMaxUnpackedBytes, qint64(2) << 30);
    }

    void brokenOrNoGuide()
    {
        QCOMPARE(noticesOf("plain text, no markup"),
                 QStringList {u"The file “g.xml” isn’t a programme guide (XMLTV)."_s});
        QCOMPARE(noticesOf(""),
                 QStringList {u"The file “g.xml” isn’t a programme guide (XMLTV)."_s});
        const QByteArray packed = gzip(guide);
        QCOMPARE(noticesOf(packed.first(packed.size() - 4)).value(0),
                 u"The programme guide “g.xml” is damaged or cut short: what could be read of it "
                 "is used."_s);
        QCOMPARE(noticesOf(guide.first(guide.size() - 20)).value(0),
                 u"The programme guide “g.xml” is damaged or cut short: what could be read of it "
                 "is used."_s);
    }

    void aCleanGuideSaysNothing()
    {
        QByteArray clean = guide;
        clean.replace("start=\"tonight\"", "start=\"20261125230000\"");
        clean.replace("stop=\"later\"", "stop=\"20261125220000\"");
        QVERIFY(noticesOf(clean).isEmpty());
        QVERIFY(noticesOf(gzip(clean)).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestGuideFeed)
#include "tst_guidefeed.moc"
