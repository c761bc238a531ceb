// The rules of audio and subtitle tracks: their names in menus and notices, the track an item
// starts with, the track keys' cycle, and reading mpv's track list.
#include "model/mpvnode.h"
#include "model/mpvtracks.h"
#include "model/trackchoice.h"
#include "model/tracknames.h"

#include <QTest>

namespace {
MediaTrack audio(qint64 id, const QString &language, bool selected = false)
{
    MediaTrack track;
    track.kind = TrackKind::audio;
    track.id = id;
    track.language = language;
    track.codec = QStringLiteral("aac");
    track.channelCount = 2;
    track.isSelected = selected;
    return track;
}

MediaTrack subtitle(qint64 id, const QString &language, bool selected = false)
{
    MediaTrack track;
    track.kind = TrackKind::subtitle;
    track.id = id;
    track.language = language;
    track.codec = QStringLiteral("subrip");
    track.isSelected = selected;
    return track;
}
} // namespace

class TestTracks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void languageNames_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("639-1") << "fr"
                               << "French";
        QTest::newRow("639-2/B") << "fre"
                                 << "French";
        QTest::newRow("639-2/T") << "fra"
                                 << "French";
        QTest::newRow("English") << "eng"
                                 << "English";
        QTest::newRow("German") << "ger"
                                << "German";
        QTest::newRow("upper case") << "ENG"
                                    << "English";
        QTest::newRow("unknown code") << "xyz"
                                      << "xyz";
        QTest::newRow("none") << ""
                              << "Unknown";
        QTest::newRow("undetermined") << "und"
                                      << "Unknown";
    }

    void languageNames()
    {
        QFETCH(QString, code);
        QFETCH(QString, name);
        QCOMPARE(TrackNames::languageName(code), name);
    }

    void labelsNameLanguageTitleAndKind()
    {
        MediaTrack commentary = audio(2, QStringLiteral("fre"));
        commentary.title = QStringLiteral("Commentary");
        QCOMPARE(TrackNames::label(commentary),
                 QStringLiteral("French \"Commentary\" (AAC stereo)"));
        QCOMPARE(TrackNames::label(subtitle(1, QStringLiteral("eng"))),
                 QStringLiteral("English (SubRip)"));
        MediaTrack surround = audio(3, QString());
        surround.codec = QStringLiteral("eac3");
        surround.channelCount = 6;
        QCOMPARE(TrackNames::label(surround), QStringLiteral("Unknown (E-AC-3 5.1)"));
        MediaTrack mono = audio(4, QStringLiteral("deu"));
        mono.channelCount = 1;
        mono.codec = QStringLiteral("pcm_s16le");
        QCOMPARE(TrackNames::label(mono), QStringLiteral("German (PCM mono)"));
        MediaTrack bare = subtitle(5, QStringLiteral("qaa"));
        bare.codec.clear();
        QCOMPARE(TrackNames::label(bare), QStringLiteral("qaa"));
        MediaTrack vtt = subtitle(6, QStringLiteral("en"));
        vtt.codec = QStringLiteral("webvtt");
        QCOMPARE(TrackNames::hint(vtt), QStringLiteral("(WebVTT)"));
    }

    void shortNamesForNotices()
    {
        QCOMPARE(TrackNames::shortName(audio(1, QStringLiteral("fre"))), QStringLiteral("French"));
        MediaTrack titled = subtitle(2, QString());
        titled.title = QStringLiteral("Director");
        QCOMPARE(TrackNames::shortName(titled), QStringLiteral("Director"));
        QCOMPARE(TrackNames::shortName(subtitle(3, QString())), QStringLiteral("Track 3"));
    }

    void aFlaggedTrackWinsOverTheSystemsLanguage()
    {
        MediaTracks tracks {audio(1, QStringLiteral("eng")), audio(2, QStringLiteral("fre"))};
        tracks[0].isDefault = true;
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::audio, QLocale::French), qint64(1));
        tracks[1].isForced = true;
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::audio, QLocale::English), qint64(2));
    }

    void withoutFlagsTheSystemsLanguagePicks()
    {
        const MediaTracks tracks {audio(1, QStringLiteral("eng")), audio(2, QStringLiteral("fr")),
                                  subtitle(1, QStringLiteral("ger")),
                                  subtitle(2, QStringLiteral("fre"))};
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::audio, QLocale::French), qint64(2));
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::subtitle, QLocale::French), qint64(2));
        // No track in the system's language: the first.
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::audio, QLocale::Japanese), qint64(1));
        QCOMPARE(TrackChoice::initial(tracks, TrackKind::subtitle, QLocale::Japanese), qint64(1));
        QCOMPARE(TrackChoice::initial({audio(1, {})}, TrackKind::subtitle, QLocale::English),
                 std::nullopt);
    }

    void soundCyclesAroundAndSubtitlesPassThroughOff()
    {
        MediaTracks tracks {audio(1, "eng", true), audio(2, "fre"), subtitle(1, "eng"),
                            subtitle(2, "fre", true)};
        QCOMPARE(TrackChoice::next(tracks, TrackKind::audio), qint64(2));
        tracks[0].isSelected = false;
        tracks[1].isSelected = true;
        QCOMPARE(TrackChoice::next(tracks, TrackKind::audio), qint64(1));
        // The last subtitle is followed by none; none by the first.
        QCOMPARE(TrackChoice::next(tracks, TrackKind::subtitle), std::nullopt);
        tracks[3].isSelected = false;
        QCOMPARE(TrackChoice::next(tracks, TrackKind::subtitle), qint64(1));
        QCOMPARE(TrackChoice::next({}, TrackKind::audio), std::nullopt);
        QCOMPARE(TrackChoice::selected(tracks, TrackKind::audio)->id, qint64(2));
        QVERIFY(!TrackChoice::selected(tracks, TrackKind::subtitle));
    }

    void mpvsTrackListIsRead()
    {
        const QVariantList list {
            QVariantMap {{"type", "video"}, {"id", 1}, {"codec", "h264"}, {"selected", true}},
            QVariantMap {{"type", "audio"},
                         {"id", 1},
                         {"lang", "eng"},
                         {"codec", "aac"},
                         {"demux-channel-count", 2},
                         {"default", true},
                         {"selected", true}},
            QVariantMap {{"type", "audio"},
                         {"id", 2},
                         {"lang", "fre"},
                         {"title", "Commentary"},
                         {"codec", "aac"},
                         {"demux-channel-count", 1}},
            QVariantMap {{"type", "sub"},
                         {"id", 1},
                         {"codec", "subrip"},
                         {"external", true},
                         {"forced", true}},
            QVariantMap {{"type", "sub"}}, // no id: left out
            QVariant(QStringLiteral("not a track")),
        };
        MpvNode node(list);
        const MediaTracks tracks = MpvTracks::fromNode(*node.get());
        QCOMPARE(tracks.size(), 3);
        MediaTrack english = audio(1, QStringLiteral("eng"), true);
        english.isDefault = true;
        QCOMPARE(tracks[0], english);
        QCOMPARE(tracks[1].title, QStringLiteral("Commentary"));
        QCOMPARE(tracks[1].channelCount, 1);
        QCOMPARE(tracks[2].kind, TrackKind::subtitle);
        QVERIFY(tracks[2].isExternal && tracks[2].isForced && !tracks[2].isSelected);
        MpvNode notAList(QVariant(QStringLiteral("nothing")));
        QVERIFY(MpvTracks::fromNode(*notAList.get()).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTracks)
#include "tst_tracks.moc"
