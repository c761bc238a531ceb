// Quitting the application in the middle of a recording: the recorder is destroyed while it
// prepares, records or stops. Nothing may crash or hang, and what was recorded stays playable.
#include "mediaprobe.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingstage.h"
#include "testmedia.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestRecordingQuit : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_clip;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_clip = m_dir.filePath("thirds.mp4");
        QVERIFY(TestMedia::makeColourThirds(m_clip, {640, 360}, 60, 1000));
    }

    void quittingLeavesAPlayableFile_data()
    {
        QTest::addColumn<PlayerRecordingState>("at");
        QTest::newRow("preparing") << PlayerRecordingState::preparing;
        QTest::newRow("recording") << PlayerRecordingState::recording;
        QTest::newRow("stopping") << PlayerRecordingState::stopping;
    }

    void quittingLeavesAPlayableFile()
    {
        QFETCH(PlayerRecordingState, at);
        RecordingStage stage;
        QVERIFY(stage.play(m_clip));
        const QString path = m_dir.filePath(QStringLiteral("quit-%1.mp4").arg(int(at)));
        auto recorder = std::make_unique<PlayerRecordingController>();
        recorder->setSaveFileChooser(
            [path](QWidget *, const PlayerRecordingController::SaveRequest &) { return path; });
        recorder->startRecording(PlayerRecordingQuality::normal);
        QCOMPARE(recorder->state(), PlayerRecordingState::preparing);
        if (at != PlayerRecordingState::preparing) {
            QTRY_COMPARE_WITH_TIMEOUT(recorder->state(), PlayerRecordingState::recording, 15'000);
            QTest::qWait(2000);
        }
        if (at == PlayerRecordingState::stopping) {
            recorder->stopRecording();
            QCOMPARE(recorder->state(), PlayerRecordingState::stopping);
        }
        recorder.reset();
        QTest::qWait(500);
        if (at == PlayerRecordingState::preparing) {
            // Nothing was recorded yet: no file, or one that plays.
            if (!QFile::exists(path))
                return;
        }
        QVERIFY(QFile::exists(path));
        const QJsonObject probed = MediaProbe::probe(path);
        QVERIFY(!MediaProbe::stream(probed, "video").isEmpty());
        QString errors;
        QVERIFY2(MediaProbe::decodesCleanly(path, &errors), qPrintable(errors));
        if (at != PlayerRecordingState::preparing)
            QVERIFY2(MediaProbe::duration(probed) > 1.0,
                     qPrintable(QString::number(MediaProbe::duration(probed))));
    }
};

QTEST_MAIN(TestRecordingQuit)
#include "tst_recordingquit.moc"
