#include "model/openpanels.h"

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
        const QStringList expected {"M3U Playlists and Plain Text (*.m3u *.txt)",
                                    "M3U Playlist (*.m3u)", "Plain Text (*.txt)"};
        QCOMPARE(request.nameFilters, expected);
    }
};

QTEST_GUILESS_MAIN(TestOpenPanels)
#include "tst_openpanels.moc"
