// Recordings that go wrong while they run, or are cut short while they finish: the disk
// refuses more, the folder disappears, the process is killed halfway through finishing. The
// user is told at once in plain words, and what was recorded is kept and finished later.
#include "mediaprobe.h"
#include "recording/mp4finisher.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingstage.h"
#include "testmedia.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <sys/resource.h>

class TestRecordingFailures : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_clip;
    std::unique_ptr<RecordingStage> m_stage;
    std::unique_ptr<PlayerRecordingController> m_recorder;
    QString m_answer;

    bool waitForState(PlayerRecordingState state, int timeoutMs = 15'000)
    {
        return QTest::qWaitFor([&] { return m_recorder->state() == state; }, timeoutMs);
    }

    bool startRecording(const QString &path)
    {
        m_answer = path;
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        return waitForState(PlayerRecordingState::recording);
    }

    QString journalFolder() const { return m_dir.filePath("data/LumoMediaPlayer/unfinished"); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_clip = m_dir.filePath("thirds.mp4");
        QVERIFY(TestMedia::makeColourThirds(m_clip, {640, 360}, 60, 1000));
    }

    void init()
    {
        m_stage = std::make_unique<RecordingStage>();
        QVERIFY(m_stage->play(m_clip));
        m_recorder = std::make_unique<PlayerRecordingController>();
        m_recorder->setJournalFolder(journalFolder());
        m_recorder->setSaveFileChooser(
            [this](QWidget *, const PlayerRecordingController::SaveRequest &) {
                return std::optional<QString>(m_answer);
            });
    }

    void cleanup()
    {
        m_recorder.reset();
        m_stage.reset();
    }

    void aFileSizeLimitStopsTheRecordingAtOnce()
    {
        const QString path = m_dir.filePath("limited.mp4");
        rlimit saved {};
        QVERIFY(getrlimit(RLIMIT_FSIZE, &saved) == 0);
        rlimit limited = saved;
        // Room for a few whole fragments, not for the whole recording.
        limited.rlim_cur = 1024 * 1024;
        QVERIFY(setrlimit(RLIMIT_FSIZE, &limited) == 0);
        const bool started = startRecording(path);
        // Nobody presses stop: the failure itself ends the recording.
        const bool ended = started && waitForState(PlayerRecordingState::idle, 90'000);
        setrlimit(RLIMIT_FSIZE, &saved);
        QVERIFY(started);
        QVERIFY(ended);
        const QString message = m_recorder->errorMessage().value_or(QString());
        QVERIFY2(message.startsWith("The recording is larger than this disk allows for one file."),
                 qPrintable(message));
        QVERIFY2(message.contains("File too large"), qPrintable(message));
        QVERIFY2(message.contains(path), qPrintable(message));
        QVERIFY(!m_recorder->lastSavedURL());
        QVERIFY(!m_recorder->recordingPanel());
        // The elapsed time no longer counts.
        const double duration = m_recorder->duration();
        QTest::qWait(3 * PlayerRecordingController::durationTimerMs);
        QCOMPARE(m_recorder->duration(), duration);
        // What was written before the limit plays.
        QVERIFY(QFile::exists(path));
        const int frames = MediaProbe::videoPacketCount(path);
        QVERIFY2(frames >= 15, qPrintable(QString::number(frames)));
        QVERIFY(!MediaProbe::frameAt(path, 0.2).isNull());
        QVERIFY(QDir(journalFolder()).isEmpty());
    }

    void aRemovedFolderStopsTheRecordingAtOnce()
    {
        QDir(m_dir.path()).mkpath("going");
        const QString path = m_dir.filePath("going/clip.mp4");
        QVERIFY(startRecording(path));
        QTest::qWait(1000);
        QVERIFY(QDir(m_dir.filePath("going")).removeRecursively());
        QVERIFY(waitForState(PlayerRecordingState::idle, 10'000));
        const QString message = m_recorder->errorMessage().value_or(QString());
        QVERIFY2(message.startsWith("The recording’s file or its folder was removed."),
                 qPrintable(message));
        QVERIFY2(message.contains("No such file or directory"), qPrintable(message));
        QVERIFY(!m_recorder->lastSavedURL());
        QVERIFY(!m_recorder->recordingPanel());
        QVERIFY(!QFile::exists(path));
    }

    void finishingLeavesOtherFilesBesideItAlone()
    {
        const QString path = m_dir.filePath("beside/clip.mp4");
        QDir(m_dir.path()).mkpath("beside");
        for (const char *name : {"clip.mp4.fragments", ".clip.mp4.finishing~"}) {
            QFile mine(m_dir.filePath(QString("beside/") + name));
            QVERIFY(mine.open(QIODevice::WriteOnly));
            mine.write("the user's own");
        }
        QVERIFY(startRecording(path));
        QTest::qWait(1500);
        m_recorder->stopRecording();
        QVERIFY(waitForState(PlayerRecordingState::idle, 60'000));
        QCOMPARE(m_recorder->lastSavedURL(), path);
        QStringList names = QDir(m_dir.filePath("beside"))
                                .entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
        names.sort();
        QCOMPARE(names, QStringList({".clip.mp4.finishing~", "clip.mp4", "clip.mp4.fragments"}));
        QFile mine(m_dir.filePath("beside/clip.mp4.fragments"));
        QVERIFY(mine.open(QIODevice::ReadOnly));
        QCOMPARE(mine.readAll(), "the user's own");
        QVERIFY(!Mp4Finisher::isFragmented(path));
        QVERIFY(QDir(journalFolder()).isEmpty());
    }

    void aFinishingCutShortIsCompletedAtTheNextStart()
    {
        m_stage.reset();
        const QString path = m_dir.filePath("cut.mp4");
        QProcess helper;
        helper.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", m_dir.filePath("data"));
        helper.setProcessEnvironment(environment);
        helper.start(QCoreApplication::applicationDirPath() + "/lumo-recording-helper",
                     {m_clip, path, "--stop-after", "3", "--die-while-finishing"});
        QVERIFY(helper.waitForStarted());
        QVERIFY(helper.waitForFinished(60'000));
        QCOMPARE(helper.exitStatus(), QProcess::CrashExit);
        // It died with the finished copy half written; the recording itself is untouched.
        QVERIFY(QFile::exists(Mp4Finisher::finishingPath(path)));
        QVERIFY(Mp4Finisher::isFragmented(path));
        QVERIFY(!QDir(journalFolder()).isEmpty());

        // The next start finishes it.
        m_recorder->recoverUnfinishedRecordings();
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->lastSavedURL(), std::optional<QString>(path), 30'000);
        QVERIFY(!m_recorder->errorMessage());
        QVERIFY(!Mp4Finisher::isFragmented(path));
        QVERIFY(!QFile::exists(Mp4Finisher::finishingPath(path)));
        QVERIFY(QDir(journalFolder()).isEmpty());
        const int frames = MediaProbe::videoPacketCount(path);
        QVERIFY2(frames >= 2 * 30, qPrintable(QString::number(frames)));
        QString errors;
        QVERIFY2(MediaProbe::decodesCleanly(path, &errors), qPrintable(errors));
    }

    void aRecordingWhoseFileIsGoneIsForgottenAtTheNextStart()
    {
        QDir().mkpath(journalFolder());
        QFile entry(journalFolder() + "/lost.recording");
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write(m_dir.filePath("never-there.mp4").toUtf8());
        entry.close();
        m_recorder->recoverUnfinishedRecordings();
        QTRY_VERIFY_WITH_TIMEOUT(QDir(journalFolder()).isEmpty(), 10'000);
        QVERIFY(!m_recorder->lastSavedURL());
        QVERIFY(!m_recorder->errorMessage());
    }
};

QTEST_MAIN(TestRecordingFailures)
#include "tst_recordingfailures.moc"
