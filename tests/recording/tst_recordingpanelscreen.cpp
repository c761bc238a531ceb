// The recording panel on a desktop of two screens: it belongs on the screen that holds the
// player, not on the first one. The test's display has one screen, so the check runs in a
// second run of this program on an X server of its own with two screens.
#include "recording/playerrecordingcontroller.h"
#include "recording/recordingnames.h"
#include "recording/recordingpanel.h"
#include "recordingstage.h"
#include "testmedia.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr char childVariable[] = "LUMO_TWO_SCREEN_CHILD";
}

class TestRecordingPanelScreen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePanelGoesToThePlayersScreen()
    {
        if (qEnvironmentVariableIsSet(childVariable))
            QSKIP("the two-screen server's own run");
        QProcess server;
        // Xvfb writes the display number it took to file descriptor 1 (its output).
        server.start(QStringLiteral("Xvfb"),
                     {QStringLiteral("-displayfd"), QStringLiteral("1"),
                      QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-screen"),
                      QStringLiteral("0"), QStringLiteral("1280x800x24"), QStringLiteral("-screen"),
                      QStringLiteral("1"), QStringLiteral("1280x800x24")});
        QVERIFY(server.waitForStarted());
        QVERIFY(QTest::qWaitFor([&] { return server.canReadLine(); }, 10'000));
        const QByteArray display = server.readLine().trimmed();
        QVERIFY(!display.isEmpty());

        QProcess child;
        child.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), u':' + QString::fromLatin1(display));
        environment.insert(QString::fromLatin1(childVariable), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("onTheSecondScreen")});
        QVERIFY(child.waitForFinished(120'000));
        const QByteArray output = child.readAll();
        server.terminate();
        server.waitForFinished(5000);
        QVERIFY2(child.exitCode() == 0, output.constData());
        QVERIFY2(output.contains("PASS   : TestRecordingPanelScreen::onTheSecondScreen()"),
                 output.constData());
    }

    void nothingOverlapsOnThePanel()
    {
        // The timer at its widest (past ten hours) and the button side by side, in the system
        // font of this desktop; the panel keeps its size when they fit.
        RecordingPanel panel;
        panel.durationLabel()->setText(RecordingNames::panelText(36'000 + 59 * 60 + 59));
        panel.durationLabel()->adjustSize();
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        const QString folder
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(folder);
        panel.grab().save(QDir(folder).filePath(QStringLiteral("recording-panel.png")));
        const QRect label = panel.durationLabel()->geometry();
        const QRect stop = panel.stopButton()->geometry();
        QVERIFY2(label.right() + 6 < stop.left(),
                 qPrintable(QStringLiteral("timer %1..%2, button from %3")
                                .arg(label.left())
                                .arg(label.right())
                                .arg(stop.left())));
        QVERIFY(panel.rect().contains(label));
        QVERIFY(panel.rect().contains(stop));
        QCOMPARE(panel.height(), RecordingPanel::panelSize.height());
        QVERIFY(panel.width() >= RecordingPanel::panelSize.width());
    }

    void onTheSecondScreen()
    {
        if (!qEnvironmentVariableIsSet(childVariable))
            QSKIP("run by thePanelGoesToThePlayersScreen on a server with two screens");
        const QList<QScreen *> screens = QGuiApplication::screens();
        QCOMPARE(screens.size(), 2);
        QScreen *second = screens.at(1);
        QVERIFY(second != QGuiApplication::primaryScreen());

        QTemporaryDir folder;
        const QString clip = folder.filePath(QStringLiteral("thirds.mp4"));
        QVERIFY(TestMedia::makeColourThirds(clip, {640, 360}, 30));
        RecordingStage stage;
        stage.window()->setScreen(second);
        stage.window()->move(second->geometry().topLeft() + QPoint(100, 100));
        QVERIFY(stage.play(clip));
        QCOMPARE(stage.window()->screen(), second);

        PlayerRecordingController recorder;
        const QString path = folder.filePath(QStringLiteral("second.mp4"));
        recorder.setSaveFileChooser(
            [path](QWidget *, const PlayerRecordingController::SaveRequest &) { return path; });
        recorder.startRecording(PlayerRecordingQuality::normal);
        QTRY_COMPARE_WITH_TIMEOUT(recorder.state(), PlayerRecordingState::recording, 15'000);
        QVERIFY(recorder.recordingPanel());
        QTRY_VERIFY(recorder.recordingPanel()->isVisible());
        QCOMPARE(recorder.recordingPanel()->screen(), second);
        QCOMPARE(recorder.recordingPanel()->pos(),
                 RecordingPanel::placement(second->availableGeometry(),
                                           recorder.recordingPanel()->width()));
        recorder.stopRecording();
        QTRY_COMPARE_WITH_TIMEOUT(recorder.state(), PlayerRecordingState::idle, 30'000);
    }
};

QTEST_MAIN(TestRecordingPanelScreen)
#include "tst_recordingpanelscreen.moc"
