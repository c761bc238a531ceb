// Which entries of a playlist mpv expanded the player loads itself: those inserted for the
// item, in order, that a channel may lead to.
#include "model/expandedplaylist.h"
#include "model/mpvnode.h"

#include <QTest>

namespace {

QVariantMap entry(qint64 id, const QString &filename)
{
    return {{QStringLiteral("id"), id}, {QStringLiteral("filename"), filename}};
}

} // namespace

class TestExpandedPlaylist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheInsertedEntriesAreTaken()
    {
        MpvNode playlist(QVariantList {
            entry(3, QStringLiteral("http://before.example/a")),
            entry(7, QStringLiteral("http://radio.example/one")),
            entry(8, QStringLiteral("https://radio.example/two")),
            entry(9, QStringLiteral("http://after.example/b")),
        });
        QCOMPARE(ExpandedPlaylist::insertedEntries(*playlist.get(), 7, 2, false),
                 (QList<QUrl> {QUrl(QStringLiteral("http://radio.example/one")),
                               QUrl(QStringLiteral("https://radio.example/two"))}));
        QVERIFY(ExpandedPlaylist::insertedEntries(*playlist.get(), 20, 2, false).isEmpty());
    }

    void entriesNoChannelMayLeadToAreLeftOut()
    {
        MpvNode playlist(QVariantList {
            entry(1, QStringLiteral("edl:///tmp/x.ts;file=av://lavfi:anullsrc")),
            entry(2, QStringLiteral("av://lavfi:testsrc")),
            entry(3, QStringLiteral("tcp://127.0.0.1:9/")),
            entry(4, QStringLiteral("ftp://files.example/a.mp3")),
            entry(5, QStringLiteral("/etc/passwd")),
            entry(6, QStringLiteral("file:///etc/passwd")),
            entry(7, QStringLiteral("relative/stream.mp3")),
            entry(8, QStringLiteral("http:///no-host")),
            entry(9, QStringLiteral("rtsp://camera.example/live")),
            entry(10, QStringLiteral("http://radio.example:8000/stream")),
        });
        QCOMPARE(ExpandedPlaylist::insertedEntries(*playlist.get(), 1, 10, false),
                 (QList<QUrl> {QUrl(QStringLiteral("rtsp://camera.example/live")),
                               QUrl(QStringLiteral("http://radio.example:8000/stream"))}));
        // A playlist on this machine may also name files on it.
        QCOMPARE(ExpandedPlaylist::insertedEntries(*playlist.get(), 5, 2, true),
                 (QList<QUrl> {QUrl::fromLocalFile(QStringLiteral("/etc/passwd")),
                               QUrl(QStringLiteral("file:///etc/passwd"))}));
    }

    void somethingThatIsNoPlaylistGivesNothing()
    {
        MpvNode text(QStringLiteral("not a list"));
        QVERIFY(ExpandedPlaylist::insertedEntries(*text.get(), 0, 5, false).isEmpty());
        MpvNode odd(QVariantList {QStringLiteral("x"), QVariantMap {{"id", "7"}},
                                  QVariantMap {{"id", 7}, {"filename", 3}}});
        QVERIFY(ExpandedPlaylist::insertedEntries(*odd.get(), 0, 10, false).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestExpandedPlaylist)
#include "tst_expandedplaylist.moc"
