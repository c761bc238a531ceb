#include "model/openpanels.h"

#include <QDir>
#include <QTest>

class TestOpenPanels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mediaPanel()
    {
        const OpenPanelRequest request = OpenPanels::chooseMedia();
        QCOMPARE(request.title, "Choose Media to Play");
        QCOMPARE(request.nameFilters.size(), 1);
        QCOMPARE(request.nameFilters.constFirst(),
                 "Media Files (*.mp4 *.mov *.mkv *.avi *.webm *.m4v *.mpeg *.mpg *.ts *.m2ts "
                 "*.3gp *.3g2 *.mp3 *.m4a *.aac *.wav *.aiff *.caf)");
        QCOMPARE(OpenPanels::mediaExtensions().size(), 18);
    }

    void playlistPanel()
    {
        const OpenPanelRequest request = OpenPanels::importPlaylist();
        QCOMPARE(request.title, "Import M3U Playlist");
        QCOMPARE(request.confirmLabel, "Import");
        const QStringList expected {"M3U Playlists and Plain Text (*.m3u *.m3u8 *.txt)",
                                    "M3U Playlist (*.m3u *.m3u8)", "Plain Text (*.txt)",
                                    "All Files (*)"};
        QCOMPARE(request.nameFilters, expected);
    }

    void playlistPanelOffersEveryKindOfList()
    {
        const QStringList filters = OpenPanels::importPlaylist().nameFilters;
        // The patterns of a filter such as "Name (*.a *.b)".
        const auto patterns = [](const QString &filter) {
            const qsizetype open = filter.lastIndexOf(u'(');
            return filter.mid(open + 1, filter.size() - open - 2).split(u' ');
        };
        const auto offered = [&](const QString &file) {
            for (const QString &filter : filters) {
                if (QDir::match(patterns(filter), file))
                    return true;
            }
            return false;
        };
        // The first filter, shown by default, takes both playlist names.
        QVERIFY(QDir::match(patterns(filters.constFirst()), QStringLiteral("playlist.m3u8")));
        QVERIFY(QDir::match(patterns(filters.constFirst()), QStringLiteral("playlist.m3u")));
        QVERIFY(offered(QStringLiteral("channels")));
        QVERIFY(offered(QStringLiteral("tv.list")));
    }
};

QTEST_GUILESS_MAIN(TestOpenPanels)
#include "tst_openpanels.moc"
