// The application and its first window under a real X server, drawing real video with libmpv.
#include "app/lumomediaplayerapp.h"
#include "httpserver/localhttpserver.h"
#include "mediaprobe.h"
#include "model/playermodel.h"
#include "pagescript.h"
#include "recording/capturegeometry.h"
#include "recording/mp4finisher.h"
#include "recording/playerrecordingcontroller.h"
#include "recording/recordingjournal.h"
#include "surface/playerhostingview.h"
#include "testmedia.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/contentview.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"
#include "ui/recordcontrol.h"
#include "ui/recordingalerts.h"
#include "ui/toastoverlay.h"
#include "webplayer/youtubehostingview.h"
#include "webplayer/youtubeplayerregistry.h"
#include "windowactivation.h"

#include <QApplication>
#include <QDir>
#include <QFileOpenEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class TestLumoMediaPlayerApp : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;

    static QPushButton *emptyState(PlayerWindow &window)
    {
        for (QPushButton *button : window.findChildren<QPushButton *>())
            if (button->toolTip() == QLatin1String("Open Media"))
                return button;
        return nullptr;
    }
    static QLabel *label(PlayerWindow &window, const QString &text)
    {
        for (QLabel *label : window.findChildren<QLabel *>())
            if (label->text() == text && label->isVisible())
                return label;
        return nullptr;
    }

    // Saves the window as the user sees it, for a look by eye, under the build folder.
    static QImage saveScreenshot(QWidget &window, const QString &name)
    {
        const QString folder
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(folder);
        const QImage image = window.grab().toImage();
        image.save(QDir(folder).filePath(name + QStringLiteral(".png")));
        return image;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("clip.mp4")), 3, {640, 360}));
    }

    void opensTheFileGivenOnTheCommandLineAndDrawsIt()
    {
        LumoMediaPlayerApp app;
        QSignalSpy frames(app.window().hostingView(), &PlayerHostingView::frameDrawn);
        app.start({m_media.filePath(QStringLiteral("clip.mp4"))});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // The first window opens at its initial size, centred on the screen.
        QCOMPARE(app.window().contentView()->size(), QSize(700, 430));
        const QPoint screenCentre = app.window().screen()->availableGeometry().center();
        QVERIFY((app.window().frameGeometry().center() - screenCentre).manhattanLength() <= 2);
        QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 3, 15000);
        QCOMPARE(app.model().title(), "clip.mp4");
        QVERIFY(app.window().windowTitle().startsWith(QLatin1String("clip.mp4")));
        QVERIFY(!emptyState(app.window())->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(app.model().videoAspectRatio() - 16.0 / 9) < 0.001, 10000);

        // The picture is the clip, not black: the test pattern is colourful.
        const QImage picture = app.window().hostingView()->grabFramebuffer();
        int coloured = 0;
        for (int y = 0; y < picture.height(); y += 16)
            for (int x = 0; x < picture.width(); x += 16)
                coloured += qGray(picture.pixel(x, y)) > 40 ? 1 : 0;
        QVERIFY2(coloured > 50, "the view shows no picture");
    }

    void aFileTheSystemAsksToOpenPlaysLikeADroppedOne()
    {
        LumoMediaPlayerApp app;
        QSignalSpy frames(app.window().hostingView(), &PlayerHostingView::frameDrawn);
        app.start({});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // How the system hands a file to a running application.
        QFileOpenEvent request(QUrl::fromLocalFile(m_media.filePath(QStringLiteral("clip.mp4"))));
        QVERIFY(QCoreApplication::sendEvent(qApp, &request));
        QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 3, 15000);
        QCOMPARE(app.model().title(), "clip.mp4");
        QVERIFY(!app.model().isLiveStream());
    }

    void aRequestToOpenAnythingButALocalFileIsIgnored()
    {
        LumoMediaPlayerApp app;
        app.start({});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // mpv would read these itself: an FFmpeg filter graph, a web address.
        for (const QString &address :
             {QStringLiteral("av://lavfi:sine"), QStringLiteral("http://127.0.0.1:9/clip.mp4")}) {
            QFileOpenEvent request {QUrl(address)};
            QCoreApplication::sendEvent(qApp, &request);
        }
        QTest::qWait(1000);
        QVERIFY(!app.model().player().hasItem());
        QCOMPARE(app.model().title(), "No Media Selected");
    }

    void theEmptyStateInvitesToOpenMedia()
    {
        LumoMediaPlayerApp app;
        app.start({});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QPushButton *invitation = emptyState(app.window());
        QVERIFY(invitation);
        QVERIFY(invitation->isVisible());
        QVERIFY(label(app.window(), QStringLiteral("Click to open media")));
        QVERIFY(label(app.window(), QStringLiteral("or drop a video or audio file here")));
        QCOMPARE(app.model().title(), "No Media Selected");
        saveScreenshot(app.window(), QStringLiteral("window-empty"));
    }

    void aFileThatCannotPlaySaysSo()
    {
        LumoMediaPlayerApp app;
        app.start({m_media.filePath(QStringLiteral("missing.mp4"))});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        // The notice slides in at the top of the window.
        ToastOverlay *toast = app.window().contentView()->toast();
        QTRY_COMPARE_WITH_TIMEOUT(toast->message(), QStringLiteral("Could not play missing.mp4."),
                                  15000);
        QVERIFY(toast->isVisible());
        QTRY_VERIFY(emptyState(app.window())->isVisible());
    }

    void anUnusableAddressShowsTheError()
    {
        LumoMediaPlayerApp app;
        app.start({QStringLiteral("ftp://example.com/a.m3u8")});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QTRY_VERIFY_WITH_TIMEOUT(
            label(app.window(), QStringLiteral("Enter a valid HTTP or HTTPS address.")), 15000);
    }

    void aVideoServiceAddressOpensTheWebPlayerWhichReceivesTheTransport()
    {
        LumoMediaPlayerApp app;
        app.start({QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ")});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QTRY_VERIFY_WITH_TIMEOUT(YouTubePlayerRegistry::shared().webView(), 15000);
        auto *web = qobject_cast<YouTubeHostingView *>(YouTubePlayerRegistry::shared().webView());
        QVERIFY(web);
        QCOMPARE(web->window(), &app.window());
        QVERIFY(web->isVisible());
        QVERIFY(!app.window().hostingView()->isVisible());
        QVERIFY(!emptyState(app.window())->isVisible());

        // The model's commands reach the page. Offline the service's script fails to load, but
        // the page and its functions are there; the test replaces one to see it called.
        const auto pageSays = [web](const QString &script) {
            return PageScript::evaluate(web->page(), script, 5000).value_or(false).toBool();
        };
        QTRY_VERIFY_WITH_TIMEOUT(pageSays(QStringLiteral("document.readyState === 'complete' && "
                                                         "typeof lumoToggle === 'function'")),
                                 30000);
        QVERIFY(pageSays(QStringLiteral("window.lumoToggle = function () { window.toggled = true; "
                                        "}; true")));
        app.model().togglePlayback();
        QTRY_VERIFY_WITH_TIMEOUT(pageSays(QStringLiteral("window.toggled === true")), 15000);
    }

    void aPlaylistAddressOpensInTheSidebarWithItsChannels()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        server.serveDirectory(m_media.path());
        QByteArray playlist = "#EXTM3U\n";
        const QList<QByteArray> channels {"Lumo News", "Lumo Sport", "Lumo Musique", "Lumo Kids"};
        const QList<QByteArray> countries {"US", "DE", "FR", "GB"};
        for (int i = 0; i < channels.size(); ++i)
            playlist += "#EXTINF:-1 tvg-country=\"" + countries.at(i) + "\" group-title=\"TV\","
                + channels.at(i) + "\n/clip.mp4\n";
        server.route(QStringLiteral("/channels.m3u"), HttpResponse::text(playlist));

        LumoMediaPlayerApp app;
        app.start({server.url(QStringLiteral("/channels.m3u")).toString()});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        ContentView *content = app.window().contentView();
        QVERIFY(content->showsSidebar());
        QTRY_COMPARE_WITH_TIMEOUT(app.model().playlist().size(), 4, 10000);
        QTRY_VERIFY(content->channelList()->isVisible());
        QCOMPARE(content->channelList()->headerText(),
                 QString::fromUtf16(u"IPTV CHANNELS  \u00b7  4 / 4"));
        QCOMPARE(app.model().title(), "IPTV Playlist");
        QTRY_COMPARE(content->sidebar()->x(), 0);
        QTRY_COMPARE(app.window().windowTitle(), "IPTV Playlist");
        saveScreenshot(app.window(), QStringLiteral("window-sidebar-playlist"));

        // A click on a row plays the channel; the picture shows in every display mode.
        QSignalSpy frames(app.window().hostingView(), &PlayerHostingView::frameDrawn);
        QListView *list = content->channelList()->listView();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualRect(content->channelList()->listModel()->index(1)).center());
        QCOMPARE(app.model().title(), "Lumo Sport");
        QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 5, 15000);
        QTRY_VERIFY_WITH_TIMEOUT(app.model().videoAspectRatio() > 1.7, 10000);
        saveScreenshot(app.window(), QStringLiteral("window-playing-sidebar"));
        content->setShowSidebar(false);
        QTRY_VERIFY(!content->sidebar()->isVisible());
        for (PortraitDisplayMode mode : PortraitDisplayModes::allCases) {
            content->setPortraitMode(mode);
            frames.clear();
            QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 3, 10000);
            QTest::qWait(100);
            const QImage shot
                = saveScreenshot(app.window(),
                                 QStringLiteral("window-mode-%1")
                                     .arg(PortraitDisplayModes::title(mode).toLower())
                                     .replace(QRegularExpression(QStringLiteral("[^a-z0-9]+")),
                                              QStringLiteral("-")));
            QVERIFY(!shot.isNull());
        }
        content->setPortraitMode(PortraitDisplayMode::normal);
        app.model().showToast(QStringLiteral("Nothing to replay yet."));
        QTest::qWait(ToastOverlay::animationMs * 2);
        saveScreenshot(app.window(), QStringLiteral("window-toast"));
    }

    void theRecordControlRecordsThePlayingVideo()
    {
        LumoMediaPlayerApp app;
        QSignalSpy frames(app.window().hostingView(), &PlayerHostingView::frameDrawn);
        app.start({m_media.filePath(QStringLiteral("clip.mp4"))});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QVERIFY(WindowActivation::activate(&app.window()));
        QTRY_VERIFY_WITH_TIMEOUT(frames.size() >= 3, 15000);
        ContentView *content = app.window().contentView();
        PlayerRecordingController *recorder = content->recordingController();
        const QString path = m_media.filePath(QStringLiteral("recorded.mp4"));
        recorder->setSaveFileChooser(
            [&path](QWidget *, const PlayerRecordingController::SaveRequest &) { return path; });
        QStringList revealed;
        content->recordingAlerts()->setRevealHandler(
            [&revealed](const QString &file) { revealed.append(file); });

        // The control bar's record menu starts it, its stop button ends it.
        auto *control = content->controlBar()->findChild<RecordControl *>();
        QVERIFY(control);
        control->qualityMenu()->actions().constFirst()->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(recorder->state(), PlayerRecordingState::recording, 15000);
        QCOMPARE(control->face(), RecordControl::Face::stop);
        QVERIFY(recorder->recordingPanel());
        QTest::qWait(2000);
        recorder->stopRecording();
        QTRY_COMPARE_WITH_TIMEOUT(recorder->state(), PlayerRecordingState::idle, 30000);
        QCOMPARE(recorder->lastSavedURL(), path);
        QMessageBox *saved = content->recordingAlerts()->savedAlert();
        QVERIFY(saved);
        QTRY_VERIFY(saved->isVisible());
        saveScreenshot(app.window(), QStringLiteral("window-recording-saved"));
        const QSize view = app.window().hostingView()->size();
        QCOMPARE(MediaProbe::stream(MediaProbe::probe(path), QStringLiteral("video"))
                     .value(QStringLiteral("width"))
                     .toInt(),
                 CaptureGeometry::evenDimension(view.width() * app.window().devicePixelRatioF()));
        for (QAbstractButton *button : saved->buttons()) {
            if (button->text() == RecordingAlerts::revealButtonText())
                button->click();
        }
        QCOMPARE(revealed, QStringList {path});
    }

    void aRecordingCutShortIsFinishedWhenThePlayerStarts()
    {
        // A recording left in fragments by a crash, and the note the recorder kept of it.
        const QString path = m_media.filePath(QStringLiteral("cut-short.mp4"));
        QProcess ffmpeg;
        ffmpeg.start(QStringLiteral("ffmpeg"),
                     {"-v", "error", "-y", "-i", m_media.filePath(QStringLiteral("clip.mp4")), "-c",
                      "copy", "-movflags", "frag_keyframe+empty_moov", path});
        QVERIFY(ffmpeg.waitForFinished(60'000) && ffmpeg.exitCode() == 0);
        QVERIFY(Mp4Finisher::isFragmented(path));
        const QByteArray savedDataHome = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", m_media.filePath(QStringLiteral("data")).toUtf8());
        const QString journal = RecordingJournal::defaultFolder();
        QVERIFY(journal.startsWith(m_media.path()));
        QVERIFY(QDir().mkpath(journal));
        QFile entry(QDir(journal).filePath(QStringLiteral("1-1.recording")));
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write(path.toUtf8());
        entry.close();

        LumoMediaPlayerApp app;
        app.start({});
        PlayerRecordingController *recorder = app.window().contentView()->recordingController();
        QTRY_COMPARE_WITH_TIMEOUT(recorder->lastSavedURL(), std::optional<QString>(path), 30000);
        if (savedDataHome.isEmpty())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", savedDataHome);
        QVERIFY(!Mp4Finisher::isFragmented(path));
        QVERIFY(QDir(journal).isEmpty());
        QTRY_VERIFY(app.window().contentView()->recordingAlerts()->savedAlert());
        QTRY_VERIFY(app.window().contentView()->recordingAlerts()->savedAlert()->isVisible());
    }

    // Last: it ends the application's event loop.
    void closingTheWindowEndsTheApplication()
    {
        LumoMediaPlayerApp app;
        app.start({});
        QVERIFY(QTest::qWaitForWindowExposed(&app.window()));
        QSignalSpy lastClosed(qApp, &QGuiApplication::lastWindowClosed);
        // Closing happens inside the application's own loop, as when the user closes it.
        QTimer::singleShot(0, &app.window(), [&app] { app.window().close(); });
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(2); });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(lastClosed.size(), 1);
    }
};

QTEST_MAIN(TestLumoMediaPlayerApp)
#include "tst_lumomediaplayerapp.moc"
