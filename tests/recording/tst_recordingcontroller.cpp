#include "mediaprobe.h"
#include "recording/capturegeometry.h"
#include "recording/playercapturewriter.h"
#include "recording/playerrecordingcontroller.h"
#include "recording/recordingnames.h"
#include "recording/screencapturepermission.h"
#include "recordingstage.h"
#include "surface/playersurfaceregistry.h"
#include "testmedia.h"
#include "windowactivation.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

namespace {

// A platform that asks the user, and whose user says no.
class RefusedPermission final : public ScreenCapturePermission
{
public:
    bool preflight() override { return false; }
    bool request() override
    {
        ++requests;
        return false;
    }
    bool canBeRefused() const override { return true; }
    int requests = 0;
};

// A platform that asks and was answered yes.
class AskingPermission final : public ScreenCapturePermission
{
public:
    bool preflight() override { return true; }
    bool request() override { return true; }
    bool canBeRefused() const override { return true; }
};

// A view that never draws, to stop a recording before any picture arrived; the real views
// always draw at once. Its rectangle is set by the test.
class SilentSurface final : public QWidget, public PlayerRecordingSurface
{
public:
    using QWidget::QWidget;
    QWidget *recordingView() override { return this; }
    QRectF recordingRectInView() const override { return rectInView; }
    void setPictureReceiver(PictureReceiver receiver) override { receiving = bool(receiver); }
    QRectF rectInView {0, 0, 200, 100};
    bool receiving = false;
};

QString pactl(const QStringList &arguments)
{
    QProcess process;
    process.start("pactl", arguments);
    process.waitForFinished(10'000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

class TestRecordingController : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_clip;
    std::unique_ptr<RecordingStage> m_stage;
    std::unique_ptr<PlayerRecordingController> m_recorder;
    QList<PlayerRecordingController::SaveRequest> m_requests;
    std::optional<QString> m_answer;

    void makeRecorder()
    {
        m_recorder = std::make_unique<PlayerRecordingController>();
        m_requests.clear();
        m_recorder->setSaveFileChooser(
            [this](QWidget *, const PlayerRecordingController::SaveRequest &request) {
                m_requests.append(request);
                return m_answer;
            });
    }

    bool waitForState(PlayerRecordingState state, int timeoutMs = 15'000)
    {
        return QTest::qWaitFor([&] { return m_recorder->state() == state; }, timeoutMs);
    }

    // Records seconds of the stage at quality into path; empty on success, else what failed.
    QString record(PlayerRecordingQuality quality, const QString &path, int milliseconds)
    {
        m_answer = path;
        m_recorder->startRecording(quality);
        if (m_recorder->state() != PlayerRecordingState::preparing)
            return "did not prepare: " + m_recorder->errorMessage().value_or("no error");
        if (!waitForState(PlayerRecordingState::recording))
            return "did not start: " + m_recorder->errorMessage().value_or("no error");
        QTest::qWait(milliseconds);
        m_recorder->stopRecording();
        if (m_recorder->state() != PlayerRecordingState::stopping)
            return "did not stop";
        if (!waitForState(PlayerRecordingState::idle, 60'000))
            return "did not finish";
        if (m_recorder->errorMessage())
            return *m_recorder->errorMessage();
        return {};
    }

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
        makeRecorder();
    }

    void cleanup()
    {
        m_recorder.reset();
        m_stage.reset();
    }

    void recordsThePlayerWithItsSound_data()
    {
        QTest::addColumn<PlayerRecordingQuality>("quality");
        QTest::addColumn<QSize>("size");
        QTest::newRow("normal") << PlayerRecordingQuality::normal << QSize(640, 360);
        QTest::newRow("hd") << PlayerRecordingQuality::hd << QSize(1920, 1080);
    }

    void recordsThePlayerWithItsSound()
    {
        QFETCH(PlayerRecordingQuality, quality);
        QFETCH(QSize, size);
        const QString path = m_dir.filePath(QTest::currentDataTag() + QString(".mp4"));
        QSignalSpy states(m_recorder.get(), &PlayerRecorder::stateChanged);
        const QString failure = record(quality, path, 5000);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QCOMPARE(states.count(), 4); // preparing, recording, stopping, idle
        QCOMPARE(m_recorder->lastSavedURL(), path);
        QVERIFY(!m_recorder->requiresScreenRecordingPermission());

        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject video = MediaProbe::stream(probed, "video");
        QCOMPARE(video.value("codec_name").toString(), "h264");
        QCOMPARE(video.value("profile").toString(), "High");
        QCOMPARE(QSize(video.value("width").toInt(), video.value("height").toInt()), size);
        const QJsonObject audio = MediaProbe::stream(probed, "audio");
        QCOMPARE(audio.value("codec_name").toString(), "aac");
        QCOMPARE(audio.value("sample_rate").toString(), "48000");
        QCOMPARE(audio.value("channels").toInt(), 2);
        const double seconds = MediaProbe::duration(probed);
        QVERIFY2(std::abs(seconds - 5) <= 0.3, qPrintable(QString::number(seconds)));

        // The colours on screen, third by third, are the colours in the file.
        const QImage screen
            = m_stage->view()->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
        const QImage frame = MediaProbe::frameAt(path, 2.5);
        QVERIFY(!frame.isNull());
        for (const double across : {1 / 6.0, 3 / 6.0, 5 / 6.0}) {
            for (const double down : {0.05, 0.6}) {
                const auto box = [&](const QImage &image) {
                    const QSize s = image.size();
                    return QRect(int(s.width() * across) - s.width() / 20,
                                 int(s.height() * down) - s.height() / 40, s.width() / 10,
                                 s.height() / 20);
                };
                const QColor shown = MediaProbe::meanColour(screen, box(screen));
                const QColor recorded = MediaProbe::meanColour(frame, box(frame));
                QVERIFY2(std::abs(shown.red() - recorded.red()) < 24
                             && std::abs(shown.green() - recorded.green()) < 24
                             && std::abs(shown.blue() - recorded.blue()) < 24,
                         qPrintable(shown.name() + " on screen, " + recorded.name() + " recorded"));
            }
        }
        // The clip's 1 kHz tone went through the sound server into the file.
        const double tone = MediaProbe::toneShare(MediaProbe::sound(path), 1000);
        QVERIFY2(tone > 0.5, qPrintable(QString::number(tone)));
        const auto statistics = m_recorder->lastStatistics();
        qInfo("frames written %lld, dropped %lld, audio offset %.3f s", statistics.framesWritten,
              statistics.framesDropped, statistics.audioOffset);
        QVERIFY(statistics.framesWritten > 100);
    }

    void aBusyMachineDropsPicturesRatherThanStretchingTheFile()
    {
        // Both cores spin while an HD recording runs, as on a loaded machine: the encoder falls
        // behind.
        std::atomic<bool> spinning {true};
        std::vector<std::thread> load;
        for (int core = 0; core < 2; ++core)
            load.emplace_back([&spinning] {
                volatile std::uint64_t turns = 0;
                while (spinning.load(std::memory_order_relaxed))
                    turns = turns + 1;
            });
        const QString path = m_dir.filePath("loaded.mp4");
        const QString failure = record(PlayerRecordingQuality::hd, path, 5000);
        spinning = false;
        for (std::thread &thread : load)
            thread.join();
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        // The file lasts as long as the recording did, not as long as the encoder took.
        const double seconds = MediaProbe::duration(MediaProbe::probe(path));
        const auto statistics = m_recorder->lastStatistics();
        qInfo("under load: %.2f s, pictures %lld, too late %lld, frames %lld", seconds,
              statistics.picturesWritten, statistics.picturesTooLate, statistics.framesWritten);
        QVERIFY2(std::abs(seconds - 5) <= 0.5, qPrintable(QString::number(seconds)));
        QVERIFY(statistics.framesWritten <= qint64(5.5 * PlayerCaptureWriter::frameRate));
    }

    void aPortraitModeRecordsTheCropsShape()
    {
        m_stage->view()->setDisplayMode(PortraitDisplayMode::manual);
        QTest::qWait(200);
        const QRectF crop = m_stage->view()->recordingRectInView();
        QVERIFY(crop.width() < crop.height());
        const QString path = m_dir.filePath("portrait.mp4");
        const QString failure = record(PlayerRecordingQuality::hd, path, 1500);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        const QJsonObject video = MediaProbe::stream(MediaProbe::probe(path), "video");
        const QSize recorded(video.value("width").toInt(), video.value("height").toInt());
        QCOMPARE(recorded,
                 CaptureGeometry::outputDimensions(crop.size(), 1, PlayerRecordingQuality::hd));
        QCOMPARE(recorded.height(), 1920);
        const QSize normal
            = CaptureGeometry::outputDimensions(crop.size(), 1, PlayerRecordingQuality::normal);
        QVERIFY(normal.width() < normal.height());
    }

    void anExistingFileIsReplaced()
    {
        const QString path = m_dir.filePath("again.mp4");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("not a movie");
        old.close();
        const QString failure = record(PlayerRecordingQuality::normal, path, 1000);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QCOMPARE(
            MediaProbe::stream(MediaProbe::probe(path), "video").value("codec_name").toString(),
            "h264");
    }

    void theSaveDialogProposesANameInTheMoviesFolder()
    {
        m_answer = std::nullopt;
        const QDateTime before = QDateTime::currentDateTime();
        m_recorder->startRecording(PlayerRecordingQuality::hd);
        QCOMPARE(m_requests.size(), 1);
        QCOMPARE(m_requests[0].title, "Save Recording");
        QVERIFY(m_requests[0].proposedName.startsWith("Lumo HD Recording "));
        const QDateTime named
            = QDateTime::fromString(m_requests[0].proposedName.mid(18, 19), "yyyy-MM-dd HH-mm-ss");
        QVERIFY(named.isValid());
        QVERIFY(std::abs(named.secsTo(before)) <= 2);
        QVERIFY(m_requests[0].proposedName.endsWith(".mp4"));
        // Cancelled: nothing changes.
        QCOMPARE(m_recorder->state(), PlayerRecordingState::idle);
        QVERIFY(!m_recorder->errorMessage());
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QVERIFY(m_requests[1].proposedName.startsWith("Lumo Normal Recording "));
    }

    void stoppingWhileIdleOrPreparingChangesNothing()
    {
        QSignalSpy states(m_recorder.get(), &PlayerRecorder::stateChanged);
        m_recorder->stopRecording();
        QCOMPARE(states.count(), 0);
        m_answer = m_dir.filePath("preparing.mp4");
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QCOMPARE(m_recorder->state(), PlayerRecordingState::preparing);
        m_recorder->stopRecording();
        QCOMPARE(m_recorder->state(), PlayerRecordingState::preparing);
        QVERIFY(waitForState(PlayerRecordingState::recording));
        QVERIFY(m_recorder->isRecording());
        m_recorder->stopRecording();
        QCOMPARE(m_recorder->state(), PlayerRecordingState::stopping);
        QVERIFY(m_recorder->isRecording());
        // A second stop while stopping does nothing either.
        m_recorder->stopRecording();
        QVERIFY(waitForState(PlayerRecordingState::idle, 60'000));
        QCOMPARE(states.count(), 4);
    }

    void theRecordingPanelFloatsInTheCorner()
    {
        m_answer = m_dir.filePath("panel.mp4");
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QVERIFY(!m_recorder->recordingPanel());
        QVERIFY(waitForState(PlayerRecordingState::recording));
        RecordingPanel *panel = m_recorder->recordingPanel();
        QVERIFY(panel);
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        // 210 wide unless the desktop's fonts need more for the timer beside the button.
        QCOMPARE(panel->height(), 48);
        QVERIFY(panel->width() >= 210);
        QVERIFY(!panel->durationLabel()->geometry().intersects(panel->stopButton()->geometry()));
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(panel->geometry().topRight(),
                 QPoint(available.right() - 18, available.top() + 18));
        QVERIFY(panel->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(panel->windowFlags().testFlag(Qt::Tool));
        QVERIFY(panel->testAttribute(Qt::WA_ShowWithoutActivating));
        QCOMPARE(QApplication::activeWindow(), m_stage->window());
        QCOMPARE(panel->durationLabel()->text(), "REC  00:00");
        QCOMPARE(panel->stopButton()->text(), "Stop Recording");
        QVERIFY(QTest::qWaitFor([&] { return m_recorder->duration() >= 1.0; }, 3000));
        QTest::qWait(300);
        QCOMPARE(panel->durationLabel()->text(), "REC  00:01");
        QVERIFY(QTest::qWaitFor([&] { return m_recorder->duration() >= 2.0; }, 3000));
        QTest::mouseClick(panel->stopButton(), Qt::LeftButton);
        QCOMPARE(m_recorder->state(), PlayerRecordingState::stopping);
        QVERIFY(!m_recorder->recordingPanel());
        QVERIFY(waitForState(PlayerRecordingState::idle, 60'000));
        QVERIFY(m_recorder->lastSavedURL());
    }

    void aKilledRecordingStillPlaysUpToItsLastSecond()
    {
        // Another process records; nothing of it is finished when it is killed.
        m_stage.reset();
        const QString path = m_dir.filePath("killed.mp4");
        QProcess helper;
        helper.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        helper.start(QCoreApplication::applicationDirPath() + "/lumo-recording-helper",
                     {m_clip, path});
        QVERIFY(helper.waitForStarted());
        QVERIFY(QTest::qWaitFor(
            [&] { return helper.readAllStandardOutput().contains("recording"); }, 30'000));
        // Fragments begin at key frames, two seconds apart: after six seconds at least two
        // whole fragments are on the disk.
        QTest::qWait(6000);
        ::kill(pid_t(helper.processId()), SIGKILL);
        QVERIFY(helper.waitForFinished());
        QCOMPARE(helper.exitStatus(), QProcess::CrashExit);

        const QJsonObject probed = MediaProbe::probe(path);
        QCOMPARE(MediaProbe::stream(probed, "video").value("codec_name").toString(), "h264");
        QProcess count;
        count.start("ffprobe",
                    {"-v", "error", "-select_streams", "v", "-count_frames", "-show_entries",
                     "stream=nb_read_frames", "-of", "csv=p=0", path});
        QVERIFY(count.waitForFinished(60'000));
        const int frames = count.readAllStandardOutput().trimmed().toInt();
        QVERIFY2(frames >= 4 * 30, qPrintable(QString::number(frames)));
        const QImage frame = MediaProbe::frameAt(path, 3.5);
        QVERIFY(!frame.isNull());
    }

    void placementIsMeasuredFromTheAvailableArea()
    {
        QCOMPARE(RecordingPanel::placement(QRect(0, 0, 1920, 1080)), QPoint(1692, 18));
        QCOMPARE(RecordingPanel::placement(QRect(0, 25, 2560, 1415)), QPoint(2332, 43));
        QCOMPARE(RecordingPanel::placement(QRect(1920, 0, 1280, 1024)), QPoint(2972, 18));
    }

    void aRefusedPermissionNeverLeavesIdle()
    {
        auto refused = std::make_shared<RefusedPermission>();
        m_recorder->setPermission(refused);
        m_answer = m_dir.filePath("refused.mp4");
        m_recorder->startRecording(PlayerRecordingQuality::hd);
        QCOMPARE(refused->requests, 1);
        QCOMPARE(m_recorder->state(), PlayerRecordingState::idle);
        QVERIFY(m_requests.isEmpty());
        QVERIFY(m_recorder->requiresScreenRecordingPermission());
        QVERIFY(m_recorder->errorMessage()->startsWith(
            "LumoMediaPlayerPro needs Screen & System Audio Recording permission"));
    }

    void permissionLikeErrorsReadAsBlockedOnlyWhereAPermissionExists()
    {
        m_recorder->presentRecordingError("Permission denied");
        QCOMPARE(m_recorder->errorMessage(), "Permission denied");
        QVERIFY(!m_recorder->requiresScreenRecordingPermission());
        m_recorder->setPermission(std::make_shared<AskingPermission>());
        m_recorder->presentRecordingError("The user DECLINED the request");
        QVERIFY(m_recorder->errorMessage()->startsWith("macOS has blocked screen recording"));
        QVERIFY(m_recorder->requiresScreenRecordingPermission());
        m_recorder->presentRecordingError("Disk full");
        QCOMPARE(m_recorder->errorMessage(), "Disk full");
        QVERIFY(!m_recorder->requiresScreenRecordingPermission());
    }

    void withoutASurfaceOrKeyWindowNothingStarts()
    {
        m_answer = m_dir.filePath("nothing.mp4");
        PlayerSurfaceRegistry::shared().setSurface(nullptr);
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QCOMPARE(m_recorder->errorMessage(), "The player surface is not available.");
        QCOMPARE(m_recorder->state(), PlayerRecordingState::idle);
        QVERIFY(m_requests.isEmpty());
        PlayerSurfaceRegistry::shared().setSurface(m_stage->view());
        m_recorder->setErrorMessage(std::nullopt);
        QVERIFY(WindowActivation::deactivateAll());
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QCOMPARE(m_recorder->errorMessage(), "The player surface is not available.");
    }

    void stoppingBeforeAnyPictureKeepsNoFile()
    {
        SilentSurface silent(m_stage->window());
        silent.setGeometry(0, 0, 200, 100);
        silent.show();
        PlayerSurfaceRegistry::shared().setSurface(&silent);
        const QString path = m_dir.filePath("silent.mp4");
        m_answer = path;
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QVERIFY(waitForState(PlayerRecordingState::recording));
        QVERIFY(silent.receiving);
        m_recorder->stopRecording();
        QVERIFY(!silent.receiving);
        QVERIFY(waitForState(PlayerRecordingState::idle));
        QCOMPARE(m_recorder->errorMessage(), "No video frames were captured.");
        QVERIFY(!m_recorder->lastSavedURL());
        QVERIFY(!QFile::exists(path));
        PlayerSurfaceRegistry::shared().setSurface(m_stage->view());
    }

    void aFailedStartDeletesTheChosenFile()
    {
        SilentSurface thin(m_stage->window());
        thin.setGeometry(0, 0, 8, 200);
        thin.rectInView = QRectF(0, 0, 8, 200);
        thin.show();
        PlayerSurfaceRegistry::shared().setSurface(&thin);
        const QString path = m_dir.filePath("thin.mp4");
        QFile chosen(path);
        QVERIFY(chosen.open(QIODevice::WriteOnly));
        chosen.close();
        m_answer = path;
        QSignalSpy states(m_recorder.get(), &PlayerRecorder::stateChanged);
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        QCOMPARE(m_recorder->state(), PlayerRecordingState::preparing);
        QVERIFY(waitForState(PlayerRecordingState::idle));
        QCOMPARE(m_recorder->errorMessage(), "The video capture area is invalid.");
        QVERIFY(!QFile::exists(path));
        QCOMPARE(states.count(), 2);
        PlayerSurfaceRegistry::shared().setSurface(m_stage->view());
    }

    void withoutASoundServerTheRecordingIsRefused()
    {
        const QByteArray server = qgetenv("PULSE_SERVER");
        qputenv("PULSE_SERVER", ("unix:" + m_dir.filePath("no-server.socket")).toUtf8());
        const QString path = m_dir.filePath("silent.mp4");
        m_answer = path;
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        const bool idle = waitForState(PlayerRecordingState::idle);
        qputenv("PULSE_SERVER", server);
        QVERIFY(idle);
        QVERIFY(m_recorder->errorMessage());
        QVERIFY2(m_recorder->errorMessage()->startsWith("System audio is not available."),
                 qPrintable(*m_recorder->errorMessage()));
        QVERIFY(!QFile::exists(path));
        QVERIFY(!m_recorder->recordingPanel() || !m_recorder->recordingPanel()->isVisible());
    }

    void aCaptureThatEndsByItselfOnlyReportsIt()
    {
        // The recording's sound goes through a connection of its own to the sound server,
        // which the server then closes, as when the server goes away.
        const QString socket = m_dir.filePath("vanishing.socket");
        const QString module = pactl(
            {"load-module", "module-native-protocol-unix", "socket=" + socket, "auth-anonymous=1"});
        QVERIFY(!module.isEmpty());
        const QByteArray server = qgetenv("PULSE_SERVER");
        qputenv("PULSE_SERVER", ("unix:" + socket).toUtf8());
        m_answer = m_dir.filePath("ended.mp4");
        m_recorder->startRecording(PlayerRecordingQuality::normal);
        const bool started = waitForState(PlayerRecordingState::recording);
        qputenv("PULSE_SERVER", server);
        QVERIFY(started);
        QTest::qWait(500);
        pactl({"unload-module", module});
        QVERIFY(QTest::qWaitFor([&] { return bool(m_recorder->errorMessage()); }, 10'000));
        QCOMPARE(m_recorder->state(), PlayerRecordingState::idle);
        QVERIFY(!m_recorder->errorMessage()->isEmpty());
        // The panel stays, and its stop button no longer does anything.
        QVERIFY(m_recorder->recordingPanel());
        QVERIFY(m_recorder->recordingPanel()->isVisible());
        QTest::mouseClick(m_recorder->recordingPanel()->stopButton(), Qt::LeftButton);
        QCOMPARE(m_recorder->state(), PlayerRecordingState::idle);
    }
};

QTEST_MAIN(TestRecordingController)
#include "tst_recordingcontroller.moc"
