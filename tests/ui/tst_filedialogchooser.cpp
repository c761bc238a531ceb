// The model's open panels shown with the real file dialog, answered as a user would.
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "testmedia.h"
#include "ui/filedialogchooser.h"

#include <QApplication>
#include <QFileDialog>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class TestFileDialogChooser : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_files;
    std::unique_ptr<PlayerModel> m_model;
    OpenPanelRequest m_seen;
    QString m_seenAcceptLabel;

    // Answers the next file dialog: records what it shows, then picks path (or cancels).
    void answerNextDialog(const QString &path)
    {
        QTimer::singleShot(0, this, [this, path] { answer(path); });
    }
    void answer(const QString &path)
    {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog) {
            QTimer::singleShot(20, this, [this, path] { answer(path); });
            return;
        }
        m_seen = {dialog->windowTitle(), dialog->labelText(QFileDialog::Accept),
                  dialog->nameFilters()};
        if (path.isEmpty()) {
            dialog->reject();
            return;
        }
        dialog->selectFile(path);
        static_cast<QDialog *>(dialog)->accept(); // the file dialog checks the choice first
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(TestMedia::makeClip(m_files.filePath(QStringLiteral("clip.mp4")), 2));
        QFile latin1(m_files.filePath(QStringLiteral("chaînes.m3u")));
        QVERIFY(latin1.open(QIODevice::WriteOnly));
        latin1.write("#EXTM3U\n#EXTINF:-1,France 2 \xe0 la une\nfr2/index.m3u8\n");
        latin1.close();
        QFile empty(m_files.filePath(QStringLiteral("empty.m3u")));
        QVERIFY(empty.open(QIODevice::WriteOnly));
        empty.write("#EXTM3U\n");
        empty.close();
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_model->setFileChooser(fileDialogChooser(nullptr));
    }
    void cleanup() { m_model.reset(); }

    void openFileShowsTheMediaPanelAndPlaysTheChoice()
    {
        answerNextDialog(m_files.filePath(QStringLiteral("clip.mp4")));
        m_model->openFile();
        QCOMPARE(m_seen.title, "Choose Media to Play");
        QCOMPARE(m_seen.nameFilters, OpenPanels::chooseMedia().nameFilters);
        QCOMPARE(m_model->title(), "clip.mp4");
        QVERIFY(m_model->isPlaying());
        QVERIFY(!m_model->isLiveStream());
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 0, 10000);
    }

    void cancellingChangesNothing()
    {
        answerNextDialog(QString());
        m_model->openFile();
        QCOMPARE(m_model->title(), "No Media Selected");
        QVERIFY(!m_model->player().hasItem());
    }

    void importShowsThePlaylistPanelAndLoadsTheFile()
    {
        answerNextDialog(m_files.filePath(QStringLiteral("chaînes.m3u")));
        m_model->importLocalM3U(QStringLiteral("Mes chaînes"));
        QCOMPARE(m_seen.title, "Import M3U Playlist");
        QCOMPARE(m_seen.confirmLabel, "Import");
        QCOMPARE(m_seen.nameFilters, OpenPanels::importPlaylist().nameFilters);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 1, 10000);
        QCOMPARE(m_model->playlist()[0].name(), "France 2 à la une");
        QCOMPARE(m_model->playlist()[0].url(),
                 QUrl::fromLocalFile(m_files.filePath(QStringLiteral("fr2/index.m3u8"))));
        QCOMPARE(m_model->title(), "Mes chaînes");
        QVERIFY(m_model->errorMessage().isNull());
    }

    void importingAnEmptyPlaylistSaysSo()
    {
        answerNextDialog(m_files.filePath(QStringLiteral("empty.m3u")));
        m_model->importLocalM3U(std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(
            m_model->errorMessage(),
            "Could not import playlist: No playable address was found in the playlist.", 10000);
        QVERIFY(m_model->playlist().isEmpty());
    }
};

QTEST_MAIN(TestFileDialogChooser)
#include "tst_filedialogchooser.moc"
