// What one item may cost when its address turns out to be a list of lists: the order entries are
// tried in, how deep lists may lie, how many loads it may take, where a file may come from, and
// the reason told when none played.
#include "model/playlistexpansion.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPlaylistExpansion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAreTriedDepthFirstInTheirOrder()
    {
        PlaylistExpansion expansion;
        expansion.start(QUrl(u"http://r/top.pls"_s));
        expansion.expand({QUrl(u"http://r/a.pls"_s), QUrl(u"http://r/b.mp3"_s)});
        QCOMPARE(expansion.next(), QUrl(u"http://r/a.pls"_s));
        expansion.expand({QUrl(u"http://r/a1.mp3"_s)});
        QCOMPARE(expansion.next(), QUrl(u"http://r/a1.mp3"_s));
        QCOMPARE(expansion.next(), QUrl(u"http://r/b.mp3"_s));
        QCOMPARE(expansion.next(), std::nullopt);
        QCOMPARE(expansion.namedEntries(), 3);
        QCOMPARE(expansion.failureReason(), u"None of its 3 entries could be played."_s);
    }

    void aListThatNamesItselfEndsWithinItsRequests()
    {
        PlaylistExpansion expansion;
        const QUrl loop(u"http://r/loop.pls"_s);
        expansion.start(loop);
        int loads = 1;
        for (;;) {
            expansion.expand({loop, loop});
            const std::optional<QUrl> next = expansion.next();
            if (!next)
                break;
            ++loads;
            QVERIFY(loads <= 100);
        }
        // Five levels of lists inside lists, then the entries left at each level, up to the
        // budget of loads.
        QVERIFY(loads <= PlaylistExpansion::maxRequests);
        QCOMPARE(expansion.requests(), loads);
    }

    void twoListsNamingEachOtherEndAtTheirDepth()
    {
        PlaylistExpansion expansion;
        expansion.start(QUrl(u"http://r/a.pls"_s));
        int loads = 1;
        for (int i = 0;; ++i) {
            expansion.expand({QUrl(i % 2 ? u"http://r/a.pls"_s : u"http://r/b.pls"_s)});
            if (!expansion.next())
                break;
            ++loads;
        }
        QCOMPARE(loads, 1 + PlaylistExpansion::maxDepth);
        QCOMPARE(expansion.failureReason(), u"None of its 5 entries could be played."_s);
    }

    void localityFollowsTheListThatNamedTheEntry()
    {
        PlaylistExpansion expansion;
        expansion.start(QUrl::fromLocalFile(u"/home/me/radio.pls"_s));
        QVERIFY(expansion.currentIsLocal());
        expansion.expand({QUrl(u"http://r/remote.pls"_s)});
        QVERIFY(expansion.next());
        // The remote list may not name a file: its entries are listed for a network list.
        QVERIFY(!expansion.currentIsLocal());
    }

    void oneEntryIsToldInTheSingular()
    {
        PlaylistExpansion expansion;
        expansion.start(QUrl(u"http://r/one.pls"_s));
        QCOMPARE(expansion.failureReason(), QString());
        expansion.expand({QUrl(u"http://r/gone.mp3"_s)});
        QCOMPARE(expansion.failureReason(), u"Its one entry could not be played."_s);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistExpansion)
#include "tst_playlistexpansion.moc"
