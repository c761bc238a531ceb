// Audio and subtitle tracks with real libmpv, real files and the private sound server: what is
// listed, what an item starts with, what the choices and keys change (heard, and said in
// notices), and subtitle files added by name, beside the video or by hand. The system's language
// is French here, so that the choice without flags can be seen.
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "model/trackchoice.h"
#include "model/tracknames.h"
#include "soundprobe.h"
#include "testmedia.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>
#include <QWindow>

namespace {
QStringList labels(const MediaTracks &tracks, TrackKind kind)
{
    QStringList result;
    for (const MediaTrack &track : TrackChoice::ofKind(tracks, kind))
        result.append(TrackNames::label(track));
    return result;
}

std::optional<QString> selectedLanguage(const MediaTracks &tracks, TrackKind kind)
{
    const std::optional<MediaTrack> track = TrackChoice::selected(tracks, kind);
    if (!track)
        return std::nullopt;
    return track->language;
}
} // namespace

class TestPlayerTracks : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    LocalHttpServer m_server;
    std::unique_ptr<PlayerModel> m_model;

    QString media(const QString &name) const { return m_media.filePath(name); }
    MpvPlayer &player() { return static_cast<MpvPlayer &>(m_model->player()); }

    bool playUntilTracks(const QUrl &url, int count)
    {
        m_model->play(url, std::nullopt, false);
        return QTest::qWaitFor(
            [&] { return m_model->isPlaying() && m_model->tracks().size() == count; }, 15000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QLocale::system().language(), QLocale::French);
        QVERIFY(m_media.isValid());
        QVERIFY(TestMedia::makeTracks(media("flagged.mkv"), 60, true));
        QVERIFY(TestMedia::makeTracks(media("unflagged.mkv"), 60, false));
        QVERIFY(TestMedia::makeClip(media("clip.mp4"), 60));
        QVERIFY(QDir().mkpath(media("beside")));
        QVERIFY(TestMedia::makeClip(media("beside/film.mp4"), 30));
        QVERIFY(TestMedia::writeSubRip(media("beside/film.srt"), "Beside", 30));
        QVERIFY(TestMedia::writeSubRip(media("extra.srt"), "Added by hand", 60));
        // "Café crème déjà été" in Latin-1, and in Windows-1251 a Russian line.
        QVERIFY(TestMedia::writeSubRip(
            media("latin1.srt"), "Caf\xe9 cr\xe8me, d\xe9j\xe0 \xe9t\xe9 \xe0 la f\xeate.", 60));
        QVERIFY(TestMedia::writeSubRip(
            media("cyrillic.srt"),
            "\xcf\xf0\xe8\xe2\xe5\xf2, \xea\xe0\xea \xe4\xe5\xeb\xe0? \xc2\xf1\xb8 \xf5\xee\xf0\xee"
            "\xf8\xee, \xf1\xef\xe0\xf1\xe8\xe1\xee.",
            60));
        QFile broken(media("broken.srt"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write(QByteArray(4096, '\0') + QByteArray("\x89PNG\r\n\x1a\n", 8));
        broken.close();
        QVERIFY(QDir().mkpath(media("hls")));
        QVERIFY(TestMedia::makeHlsWithTwoLanguages(media("hls"), 60));
        m_server.serveDirectory(media("hls"));
        QVERIFY(m_server.listen());
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
    }

    void cleanup() { m_model.reset(); }

    void tracksAreListedByLanguageTitleAndKind()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("flagged.mkv")), 4));
        QCOMPARE(labels(m_model->tracks(), TrackKind::audio),
                 QStringList({"English (AAC mono)", "French \"Commentary\" (AAC mono)"}));
        QCOMPARE(labels(m_model->tracks(), TrackKind::subtitle),
                 QStringList({"English (SubRip)", "French (SubRip)"}));
        // The flagged sound wins over the system's language; the subtitles, none flagged,
        // follow the system's language.
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::audio), "eng");
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::subtitle), "fre");
        QTRY_COMPARE_WITH_TIMEOUT(player().subtitleText(), QStringLiteral("Bonjour"), 10000);
        QTRY_VERIFY(std::abs(SoundProbe::heardFrequency() - 440) < 20);
        // Stopped, nothing is listed.
        m_model->stop();
        QVERIFY(m_model->tracks().isEmpty());
    }

    void withoutFlagsTheSystemsLanguageChoosesTheSound()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("unflagged.mkv")), 4));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::audio), "fre");
        QTRY_VERIFY(std::abs(SoundProbe::heardFrequency() - 880) < 20);
    }

    void choosingAnotherSoundChangesWhatIsHeard()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("flagged.mkv")), 4));
        QTRY_VERIFY(std::abs(SoundProbe::heardFrequency() - 440) < 20);
        m_model->selectTrack(TrackKind::audio, 2);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Audio: French"));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::audio), "fre");
        QTRY_VERIFY(std::abs(SoundProbe::heardFrequency() - 880) < 20);
    }

    void theTrackKeysCycleAndSayWhatTheyChose()
    {
        QWidget widget;
        widget.resize(300, 200);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        // Xvfb has no window manager to activate windows; the application does it itself.
        QWindow *window = widget.windowHandle();
        window->requestActivate();
        QTRY_COMPARE(QGuiApplication::focusWindow(), window);
        m_model->installKeyboardShortcuts();
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("flagged.mkv")), 4));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::subtitle), "fre");
        // J: French was the last subtitle, so off comes next, then English.
        QTest::keyClick(window, Qt::Key_J);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Subtitles: Off"));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::subtitle), std::nullopt);
        QTest::keyClick(window, Qt::Key_J);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Subtitles: English"));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::subtitle), "eng");
        QTRY_COMPARE(player().subtitleText(), QStringLiteral("Hello"));
        // V hides and shows them; the track stays chosen.
        QTest::keyClick(window, Qt::Key_V);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Subtitles: Off"));
        QVERIFY(!m_model->subtitlesVisible());
        QVERIFY(!player().subtitlesVisible());
        QTest::keyClick(window, Qt::Key_V);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Subtitles: English"));
        QVERIFY(player().subtitlesVisible());
        // #: the other sound.
        QTest::keyClick(window, Qt::Key_NumberSign, Qt::ShiftModifier);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Audio: French"));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::audio), "fre");
    }

    void aSubtitleFileBesideTheVideoLoadsByItself()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("beside/film.mp4")), 2));
        const std::optional<MediaTrack> subtitle
            = TrackChoice::selected(m_model->tracks(), TrackKind::subtitle);
        QVERIFY(subtitle);
        QVERIFY(subtitle->isExternal);
        QTRY_COMPARE(player().subtitleText(), QStringLiteral("Beside"));
    }

    void anAddedSubtitleFileIsChosenAndTheVideoPlaysOn()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("clip.mp4")), 1));
        QVERIFY(m_model->hasVideoItem());
        // Chosen in the open panel.
        std::optional<OpenPanelRequest> asked;
        m_model->setFileChooser([&](const OpenPanelRequest &request) -> std::optional<QString> {
            asked = request;
            return media("extra.srt");
        });
        m_model->loadSubtitleFile();
        QVERIFY(asked);
        QCOMPARE(asked->title, QStringLiteral("Load Subtitle File"));
        QCOMPARE(asked->nameFilters,
                 QStringList({"Subtitles (*.srt *.ass *.ssa *.vtt *.sub)", "All Files (*)"}));
        QTRY_COMPARE(m_model->tracks().size(), 2);
        QTRY_VERIFY(TrackChoice::selected(m_model->tracks(), TrackKind::subtitle).has_value());
        QTRY_COMPARE(player().subtitleText(), QStringLiteral("Added by hand"));
        QVERIFY(m_model->isPlaying());
        QCOMPARE(m_model->title(), QStringLiteral("clip.mp4"));
    }

    void subtitleFilesInOtherEncodingsAreReadRight()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("clip.mp4")), 1));
        m_model->addSubtitleFile(media("latin1.srt"));
        QTRY_COMPARE_WITH_TIMEOUT(player().subtitleText(),
                                  QStringLiteral("Café crème, déjà été à la fête."), 10000);
        m_model->addSubtitleFile(media("cyrillic.srt"));
        QTRY_COMPARE_WITH_TIMEOUT(player().subtitleText(),
                                  QStringLiteral("Привет, как дела? Всё хорошо, спасибо."), 10000);
    }

    void anUnreadableSubtitleFileGivesANoticeAndThePictureGoesOn()
    {
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("clip.mp4")), 1));
        m_model->addSubtitleFile(media("broken.srt"));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(),
                                  QStringLiteral("Could not load the subtitle file broken.srt."),
                                  10000);
        QVERIFY(m_model->isPlaying());
        QCOMPARE(m_model->tracks().size(), 1);
        const double before = m_model->currentTime();
        QTRY_VERIFY(m_model->currentTime() > before + 0.5);
    }

    void anHlsStreamsLanguagesAreListedAndSwitched()
    {
        QVERIFY(playUntilTracks(m_server.url(QStringLiteral("/master.m3u8")), 2));
        QCOMPARE(labels(m_model->tracks(), TrackKind::audio),
                 QStringList({"English (AAC mono)", "French (AAC mono)"}));
        QTRY_COMPARE(selectedLanguage(m_model->tracks(), TrackKind::audio), "eng");
        QTRY_VERIFY(std::abs(SoundProbe::heardFrequency() - 440) < 20);
        m_model->cycleTrack(TrackKind::audio);
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Audio: French"));
        QTRY_VERIFY_WITH_TIMEOUT(std::abs(SoundProbe::heardFrequency() - 880) < 20, 15000);
    }

    void webContentAndNothingPlayingListNoTracks()
    {
        QVERIFY(m_model->tracks().isEmpty());
        QVERIFY(!m_model->hasVideoItem());
        QVERIFY(playUntilTracks(QUrl::fromLocalFile(media("flagged.mkv")), 4));
        m_model->openRemote(QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ"),
                            std::nullopt);
        QVERIFY(m_model->tracks().isEmpty());
        QVERIFY(!m_model->hasVideoItem());
        m_model->cycleTrack(TrackKind::audio);
        QVERIFY(!m_model->toastMessage().startsWith(u"Audio"));
    }
};

int main(int argc, char *argv[])
{
    // A French desktop: the language that chooses among unflagged tracks.
    qputenv("LC_ALL", "fr_FR.UTF-8");
    qputenv("LANG", "fr_FR.UTF-8");
    QApplication application(argc, argv);
    TestPlayerTracks test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_playertracks.moc"
