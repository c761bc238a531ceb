// Full screen and recording in the player window under a real X server: the floating control
// bar, the pointer hidden over playing video, the title-bar rule while recording, and the two
// recording alerts. The pointer is moved for real (warped on the test display).
#include "model/playermodel.h"
#include "recording/playerrecordingcontroller.h"
#include "recording/screencapturepermission.h"
#include "recordingrecorder.h"
#include "scriptedmediaplayer.h"
#include "surface/playerhostingview.h"
#include "surface/playersurface.h"
#include "ui/contentview.h"
#include "ui/controlbutton.h"
#include "ui/fullscreenpresenter.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"
#include "ui/recordcontrol.h"
#include "ui/recordingalerts.h"
#include "windowactivation.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {

class AskingPermission final : public ScreenCapturePermission
{
public:
    bool preflight() override { return true; }
    bool request() override { return true; }
    bool canBeRefused() const override { return true; }
};

QPushButton *buttonNamed(QMessageBox *box, const QString &text)
{
    for (QAbstractButton *button : box->buttons()) {
        if (button->text() == text)
            return qobject_cast<QPushButton *>(button);
    }
    return nullptr;
}

} // namespace

class TestFullScreen : public QObject
{
    Q_OBJECT

private:
    static constexpr int controlsDelay = 400;
    static constexpr int pointerDelay = 300;

    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;
    RecordingRecorder m_recorder;

    ContentView *content() { return m_window->contentView(); }
    FullScreenPresenter *presenter() { return content()->fullScreen(); }
    PlayerControlBar *bar() { return content()->controlBar(); }

    // Moves the real pointer to a point of the content view, a little off where it was so that
    // the window system reports a movement.
    void movePointer(QPoint inContent)
    {
        static int nudge = 0;
        nudge = 1 - nudge;
        QCursor::setPos(content()->mapToGlobal(inContent + QPoint(nudge, 0)));
        QTest::qWait(30);
    }
    QPoint overPicture() { return content()->surface()->geometry().center(); }

    void enterFullScreen()
    {
        m_window->showFullScreen();
        QTRY_VERIFY(content()->isFullScreen());
        QVERIFY(WindowActivation::activate(m_window.get()));
        QTest::qWait(50);
    }
    void startPlaying()
    {
        m_model->play(QUrl("file:///clip.mp4"), "clip.mp4", false);
        QVERIFY(m_model->isPlaying());
    }

private Q_SLOTS:
    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QVERIFY(WindowActivation::activate(m_window.get()));
        m_recorder.setState(PlayerRecordingState::idle);
        presenter()->setDelays(controlsDelay, pointerDelay);
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
        QCursor::setPos(0, 0);
    }

    void theDelaysAreTheDocumentedOnes()
    {
        QCOMPARE(FullScreenPresenter::controlsHideDelayMs, 2500);
        QCOMPARE(FullScreenPresenter::controlsShowMs, 120);
        QCOMPARE(FullScreenPresenter::controlsHideMs, 200);
        QCOMPARE(FullScreenPresenter::pointerHideDelayMs, 2000);
        QCOMPARE(FullScreenPresenter::floatingBarInset, 18);
    }

    void theWindowsRecorderDrivesTheRecordControl()
    {
        // The window made its own recorder and the control bar's record control follows it.
        PlayerRecordingController *recorder = content()->recordingController();
        QVERIFY(recorder);
        auto *control = bar()->findChild<RecordControl *>();
        QVERIFY(control);
        QVERIFY(control->isEnabled());
        QCOMPARE(control->face(), RecordControl::Face::menu);
    }

    void aMaximisedWindowComesBackMaximised()
    {
        m_window->showMaximized();
        QTRY_VERIFY(m_window->windowState() & Qt::WindowMaximized);
        QVERIFY(WindowActivation::activate(m_window.get()));

        // The control bar's button, in and out.
        ControlButton *fullScreen = nullptr;
        for (ControlButton *button : bar()->findChildren<ControlButton *>())
            if (button->toolTip() == QLatin1String("Enter full screen"))
                fullScreen = button;
        QVERIFY(fullScreen);
        fullScreen->click();
        QTRY_VERIFY(m_window->isFullScreen());
        fullScreen->click();
        QTRY_VERIFY(!m_window->isFullScreen());
        QVERIFY(m_window->windowState() & Qt::WindowMaximized);

        // A double click on the picture, in and out.
        auto *picture = m_window->findChild<PlayerHostingView *>();
        QVERIFY(picture);
        const QPoint middle = picture->rect().center();
        for (int i = 0; i < 2; ++i) {
            QTest::mouseClick(picture, Qt::LeftButton, {}, middle);
            QTest::mouseDClick(picture, Qt::LeftButton, {}, middle);
            QTest::mouseRelease(picture, Qt::LeftButton, {}, middle);
            QTRY_COMPARE(m_window->isFullScreen(), i == 0);
            QTest::qWait(600); // not one quadruple click
        }
        QVERIFY(m_window->windowState() & Qt::WindowMaximized);
    }

    void inFullScreenTheBarFloatsAndHidesAgain()
    {
        QCOMPARE(bar()->y(), content()->height() - PlayerControlBar::barHeight);
        enterFullScreen();
        QVERIFY(!presenter()->fullScreenControlsVisible());
        QVERIFY(!bar()->isVisible());
        QCOMPARE(content()->surface()->height(), content()->height());

        movePointer(overPicture());
        QTRY_VERIFY(presenter()->fullScreenControlsVisible());
        QElapsedTimer shown;
        shown.start();
        QTRY_VERIFY(bar()->isVisible());
        QTRY_COMPARE(presenter()->controlsOpacity(), 1.0);
        const int inset = FullScreenPresenter::floatingBarInset;
        QCOMPARE(bar()->geometry(),
                 QRect(inset, content()->height() - inset - PlayerControlBar::barHeight,
                       content()->width() - 2 * inset, PlayerControlBar::barHeight));

        // Each movement restarts the count, also over the bar itself.
        QTest::qWait(controlsDelay / 2);
        movePointer(bar()->geometry().center());
        shown.restart();
        QTRY_VERIFY_WITH_TIMEOUT(!presenter()->fullScreenControlsVisible(), 5000);
        QVERIFY(shown.elapsed() >= controlsDelay - 20);
        QTRY_VERIFY(!bar()->isVisible());

        // Leaving full screen puts the bar back under the picture.
        m_window->showNormal();
        QTRY_VERIFY(!content()->isFullScreen());
        QVERIFY(bar()->isVisible());
        QTRY_COMPARE(bar()->y(), content()->height() - PlayerControlBar::barHeight);
        QCOMPARE(bar()->x(), 0);
    }

    void whileRecordingTheBarStaysAwayAndTheTitleBarHides()
    {
        content()->setRecorder(&m_recorder);
        // Out of full screen a recording leaves the title bar alone.
        m_recorder.setState(PlayerRecordingState::recording);
        QVERIFY(!presenter()->titleBarHiddenForRecording());
        // Entering full screen while recording hides it, leaving shows it again.
        enterFullScreen();
        QVERIFY(presenter()->titleBarHiddenForRecording());
        movePointer(overPicture());
        QTest::qWait(100);
        QVERIFY(!presenter()->fullScreenControlsVisible());
        QVERIFY(!bar()->isVisible());
        m_window->showNormal();
        QTRY_VERIFY(!content()->isFullScreen());
        QVERIFY(!presenter()->titleBarHiddenForRecording());

        // Preparing and stopping keep the bar away too; idle lets the next movement show it.
        enterFullScreen();
        for (const auto state : {PlayerRecordingState::preparing, PlayerRecordingState::stopping}) {
            m_recorder.setState(state);
            QVERIFY(presenter()->titleBarHiddenForRecording());
            movePointer(overPicture());
            QTest::qWait(100);
            QVERIFY(!presenter()->fullScreenControlsVisible());
        }
        m_recorder.setState(PlayerRecordingState::idle);
        QVERIFY(!presenter()->titleBarHiddenForRecording());
        QVERIFY(!presenter()->fullScreenControlsVisible());
        movePointer(overPicture());
        QTRY_VERIFY(presenter()->fullScreenControlsVisible());

        // A recording that starts while the bar is shown hides it at once.
        m_recorder.setState(PlayerRecordingState::preparing);
        QVERIFY(!presenter()->fullScreenControlsVisible());
        QVERIFY(!presenter()->isControlsHidePending());
        m_recorder.setState(PlayerRecordingState::idle);
    }

    void thePointerHidesOverPlayingVideo()
    {
        startPlaying();
        movePointer(overPicture());
        QVERIFY(presenter()->isPointerHidePending());
        QTRY_VERIFY(presenter()->isPointerHidden());
        QVERIFY(QGuiApplication::overrideCursor());
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::BlankCursor);
        // The next movement shows it again and starts the count anew.
        movePointer(overPicture() + QPoint(10, 10));
        QVERIFY(!presenter()->isPointerHidden());
        QVERIFY(!QGuiApplication::overrideCursor());
        QTRY_VERIFY(presenter()->isPointerHidden());
        movePointer(overPicture());
        QVERIFY(!presenter()->isPointerHidden());

        // Also in full screen.
        enterFullScreen();
        movePointer(overPicture());
        QTRY_VERIFY(presenter()->isPointerHidden());
        movePointer(overPicture());
    }

    void thePointerStaysWhenPausedOverTheSidebarOrInAnotherWindow()
    {
        startPlaying();
        // Pausing during the wait cancels it.
        movePointer(overPicture());
        QVERIFY(presenter()->isPointerHidePending());
        m_model->togglePlayback();
        QVERIFY(!m_model->isPlaying());
        QVERIFY(!presenter()->isPointerHidePending());
        QTest::qWait(pointerDelay * 2);
        QVERIFY(!presenter()->isPointerHidden());
        // Paused, a movement arms nothing.
        movePointer(overPicture());
        QVERIFY(!presenter()->isPointerHidePending());
        // Playing again over the picture arms it.
        m_model->togglePlayback();
        QVERIFY(presenter()->isPointerHidePending());

        // Over the sidebar, never.
        content()->setShowSidebar(true, 0);
        QTRY_VERIFY(content()->sidebar()->isVisible());
        QTest::qWait(50);
        movePointer(content()->sidebar()->geometry().center());
        QVERIFY(!presenter()->isPointerHidePending());
        QTest::qWait(pointerDelay * 2);
        QVERIFY(!presenter()->isPointerHidden());

        // Not the key window: the movement arms nothing.
        content()->setShowSidebar(false, 0);
        QTest::qWait(50);
        QVERIFY(WindowActivation::deactivateAll());
        movePointer(overPicture());
        QVERIFY(!presenter()->isPointerHidePending());
        // The window lost the key while waiting: the pointer stays.
        QVERIFY(WindowActivation::activate(m_window.get()));
        movePointer(overPicture());
        QVERIFY(presenter()->isPointerHidePending());
        QVERIFY(WindowActivation::deactivateAll());
        QTest::qWait(pointerDelay * 2);
        QVERIFY(!presenter()->isPointerHidden());
    }

    void aRecordingErrorIsShownUntilDismissed()
    {
        PlayerRecordingController *recorder = content()->recordingController();
        recorder->setErrorMessage(QString("Disk full"));
        QMessageBox *alert = content()->recordingAlerts()->errorAlert();
        QVERIFY(alert);
        QTRY_VERIFY(alert->isVisible());
        QCOMPARE(alert->windowTitle(), "Recording Error");
        QCOMPARE(alert->text(), "Disk full");
        QVERIFY(!buttonNamed(alert, "Open System Settings"));
        QPushButton *ok = buttonNamed(alert, "OK");
        QVERIFY(ok);
        ok->click();
        QCOMPARE(recorder->errorMessage(), std::nullopt);
        QTRY_VERIFY(!content()->recordingAlerts()->errorAlert());

        // An empty message reads as unknown.
        recorder->setErrorMessage(QString(""));
        QTRY_VERIFY(content()->recordingAlerts()->errorAlert());
        QCOMPARE(content()->recordingAlerts()->errorAlert()->text(), "Unknown recording error.");
        content()->recordingAlerts()->errorAlert()->reject();
        QCOMPARE(recorder->errorMessage(), std::nullopt);
    }

    void aRefusedPermissionOffersTheSettings()
    {
        PlayerRecordingController *recorder = content()->recordingController();
        recorder->setPermission(std::make_shared<AskingPermission>());
        recorder->presentRecordingError("Screen capture permission was declined");
        QVERIFY(recorder->requiresScreenRecordingPermission());
        QMessageBox *alert = content()->recordingAlerts()->errorAlert();
        QVERIFY(alert);
        QVERIFY(alert->text().startsWith("macOS has blocked screen recording permission"));
        QVERIFY(buttonNamed(alert, "Open System Settings"));
        QVERIFY(buttonNamed(alert, "OK"));
        buttonNamed(alert, "OK")->click();
        QCOMPARE(recorder->errorMessage(), std::nullopt);
    }

    void aSavedRecordingCanBeShownInTheFileManager()
    {
        PlayerRecordingController *recorder = content()->recordingController();
        QStringList revealed;
        content()->recordingAlerts()->setRevealHandler(
            [&](const QString &path) { revealed.append(path); });
        recorder->setLastSavedURL(QString("/tmp/Lumo HD Recording.mp4"));
        QMessageBox *alert = content()->recordingAlerts()->savedAlert();
        QVERIFY(alert);
        QCOMPARE(alert->windowTitle(), "Recording Saved");
        QCOMPARE(alert->text(), "The MP4 recording was saved.");
        QCOMPARE(alert->informativeText(), "Lumo HD Recording.mp4");
        QPushButton *reveal = buttonNamed(alert, RecordingAlerts::revealButtonText());
        QVERIFY(reveal);
        reveal->click();
        QCOMPARE(revealed, QStringList {"/tmp/Lumo HD Recording.mp4"});
        QCOMPARE(recorder->lastSavedURL(), std::nullopt);

        // OK only dismisses.
        recorder->setLastSavedURL(QString("/tmp/second.mp4"));
        QTRY_VERIFY(content()->recordingAlerts()->savedAlert());
        buttonNamed(content()->recordingAlerts()->savedAlert(), "OK")->click();
        QCOMPARE(recorder->lastSavedURL(), std::nullopt);
        QCOMPARE(revealed.size(), 1);
    }
};

QTEST_MAIN(TestFullScreen)
#include "tst_fullscreen.moc"
