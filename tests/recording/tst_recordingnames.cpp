#include "recording/playerrecordingcontroller.h"
#include "recording/recordererror.h"
#include "recording/recordingnames.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <cstring>

class TestRecordingNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void proposedNamesCarryQualityAndTime()
    {
        const QDateTime when(QDate(2026, 11, 16), QTime(1, 20, 38));
        QCOMPARE(RecordingNames::proposedFileName(PlayerRecordingQuality::hd, when),
                 "Lumo HD Recording 2026-11-16 01-20-38.mp4");
        QCOMPARE(RecordingNames::proposedFileName(PlayerRecordingQuality::normal, when),
                 "Lumo Normal Recording 2026-11-16 01-20-38.mp4");
        // Hours run 00-23.
        QCOMPARE(RecordingNames::proposedFileName(PlayerRecordingQuality::normal,
                                                  QDateTime(QDate(2026, 1, 2), QTime(23, 5, 9))),
                 "Lumo Normal Recording 2026-01-02 23-05-09.mp4");
    }

    void saveRequestOffersTheMoviesFolder()
    {
        // The folder the desktop names for videos, here a German one.
        QTemporaryDir config;
        QFile dirs(config.filePath("user-dirs.dirs"));
        QVERIFY(dirs.open(QIODevice::WriteOnly));
        dirs.write("XDG_VIDEOS_DIR=\"$HOME/Filme\"\n");
        dirs.close();
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        const auto request = PlayerRecordingController::saveRequest(
            PlayerRecordingQuality::hd, QDateTime(QDate(2026, 11, 16), QTime(1, 20, 38)));
        QCOMPARE(request.title, "Save Recording");
        QCOMPARE(request.proposedName, "Lumo HD Recording 2026-11-16 01-20-38.mp4");
        QCOMPARE(request.directory, QDir::homePath() + "/Filme");
        qunsetenv("XDG_CONFIG_HOME");
    }

    void durationsAreWholeMinutesAndSeconds()
    {
        QCOMPARE(RecordingNames::formatDuration(0), "00:00");
        QCOMPARE(RecordingNames::formatDuration(59.9), "00:59");
        QCOMPARE(RecordingNames::formatDuration(61), "01:01");
        QCOMPARE(RecordingNames::formatDuration(3600), "60:00");
        QCOMPARE(RecordingNames::formatDuration(3905), "65:05");
        QCOMPARE(RecordingNames::formatDuration(6000), "100:00");
        QCOMPARE(RecordingNames::panelText(0), "REC  00:00");
        QCOMPARE(RecordingNames::panelText(75.3), "REC  01:15");
    }

    void bitRateIsSixBitsAPixelWithAFloor()
    {
        QCOMPARE(RecordingNames::averageBitRate(1280, 720), 5'529'600);
        QCOMPARE(RecordingNames::averageBitRate(640, 360), 4'000'000);
        QCOMPARE(RecordingNames::averageBitRate(1920, 1080), 12'441'600);
        QCOMPARE(RecordingNames::averageBitRate(2, 2), 4'000'000);
        // Past 32 bits.
        QCOMPARE(RecordingNames::averageBitRate(60000, 60000), 21'600'000'000LL);
    }

    void permissionLikeFailuresReadAsBlocked()
    {
        for (const char *text : {"Permission denied", "PERMISSION", "the user Declined",
                                 "TCC refused", "no tcc entry"}) {
            const auto shown = RecorderErrors::present(QString::fromLatin1(text));
            QCOMPARE(shown.message, RecorderErrors::permissionBlockedMessage());
            QVERIFY(shown.requiresPermission);
        }
        QVERIFY(RecorderErrors::permissionBlockedMessage().startsWith(
            "macOS has blocked screen recording permission for LumoMediaPlayerPro."));
        const auto plain = RecorderErrors::present("Disk full");
        QCOMPARE(plain.message, "Disk full");
        QVERIFY(!plain.requiresPermission);
    }

    void savedRecordingsAlwaysEndInMp4_data()
    {
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("saved");
        QTest::newRow("mp4") << "/v/clip.mp4"
                             << "/v/clip.mp4";
        QTest::newRow("MP4 in capitals") << "/v/clip.MP4"
                                         << "/v/clip.MP4";
        QTest::newRow("another film type") << "/v/clip.mov"
                                           << "/v/clip.mp4";
        QTest::newRow("Matroska") << "/v/clip.MKV"
                                  << "/v/clip.mp4";
        QTest::newRow("no type") << "/v/clip"
                                 << "/v/clip.mp4";
        QTest::newRow("a dot in the name") << "/v/take 2.final"
                                           << "/v/take 2.final.mp4";
        QTest::newRow("dotted folder") << "/v.mov/clip"
                                       << "/v.mov/clip.mp4";
    }

    void savedRecordingsAlwaysEndInMp4()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, saved);
        QCOMPARE(RecordingNames::mp4Path(chosen), saved);
    }

    void errorTexts()
    {
        QCOMPARE(RecorderErrors::description(RecorderError::writerConfigurationFailed),
                 "The MP4 recording writer could not be configured.");
        QCOMPARE(RecorderErrors::description(RecorderError::noFramesCaptured),
                 "No video frames were captured.");
        QCOMPARE(RecorderErrors::surfaceUnavailableMessage(),
                 "The player surface is not available.");
        QCOMPARE(RecorderErrors::unknownErrorMessage(), "Unknown recording error.");
        QVERIFY(RecorderErrors::permissionNeededMessage().startsWith(
            "LumoMediaPlayerPro needs Screen & System Audio Recording permission"));
    }
    void writeFailuresReadInPlainWords_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("opening");
        QTest::newRow("disk full") << ENOSPC << "The disk is full.";
        QTest::newRow("quota") << EDQUOT << "The disk is full.";
        QTest::newRow("file size limit")
            << EFBIG << "The recording is larger than this disk allows for one file.";
        QTest::newRow("removed") << ENOENT << "The recording’s file or its folder was removed.";
        QTest::newRow("read-only")
            << EROFS << "The recording’s folder can no longer be written to.";
        QTest::newRow("refused") << EACCES << "The recording’s folder can no longer be written to.";
        QTest::newRow("device") << EIO << "The disk could not be written to.";
        QTest::newRow("other") << EINVAL << "The recording could not be written.";
    }

    void writeFailuresReadInPlainWords()
    {
        QFETCH(int, code);
        QFETCH(QString, opening);
        const QString detail = QString::fromLocal8Bit(strerror(code));
        const QString kept = RecorderErrors::writeFailure(code, detail, "/media/clip.mp4");
        QCOMPARE(kept,
                 opening + " (" + detail
                     + ") The recording up to that moment is kept in “/media/clip.mp4”.");
        QCOMPARE(RecorderErrors::writeFailure(code, detail, {}), opening + " (" + detail + ")");
    }
};

QTEST_GUILESS_MAIN(TestRecordingNames)
#include "tst_recordingnames.moc"
