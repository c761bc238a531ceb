// What an assistive tool sees of the window, asked through AT-SPI on a session bus of the
// test's own (Debian's python3-pyatspi, run with /usr/bin/python3): every control of the bar
// and the sidebar by its name and role, each button pressed through its action.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "privatesessionbus.h"
#include "scriptedmediaplayer.h"
#include "testdesktop.h"
#include "ui/contentview.h"
#include "ui/networkpanel.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QProcess>
#include <QTest>

namespace {

const QString script = QStringLiteral(LUMO_SOURCE_DIR "/tests/ui/atspicontrols.py");

struct Seen
{
    QString role;
    bool showing = false;
    QStringList actions;
};

} // namespace

class TestAccessibility : public QObject
{
    Q_OBJECT

private:
    TestDesktop::WindowManager m_windowManager;
    LocalHttpServer m_server;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ContentView *content() { return m_window->contentView(); }

    // Runs the script while the window keeps answering; its standard output, or nothing.
    std::optional<QByteArray> runScript(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral("/usr/bin/python3"),
                      QStringList {script, QString::number(QCoreApplication::applicationPid())}
                          + arguments);
        if (!process.waitForStarted())
            return std::nullopt;
        // Qt answers the script's questions on this thread: the loop keeps turning meanwhile.
        QDeadlineTimer deadline(30'000);
        while (process.state() != QProcess::NotRunning && !deadline.hasExpired())
            QTest::qWait(20);
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
            return std::nullopt;
        }
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
            qWarning().noquote() << process.readAllStandardError();
            return std::nullopt;
        }
        return process.readAllStandardOutput();
    }

    // The objects of the window by name (the first one showing wins).
    QHash<QString, Seen> seen()
    {
        QHash<QString, Seen> objects;
        // The window joins the accessibility bus a little after it is shown.
        std::optional<QByteArray> output;
        for (int attempt = 0; attempt < 20 && !output; ++attempt) {
            output = runScript({});
            if (!output)
                QTest::qWait(500);
        }
        if (!output)
            return objects;
        for (const QByteArray &line : output->split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString name = object.value(QStringLiteral("name")).toString();
            if (name.isEmpty() || (objects.contains(name) && objects.value(name).showing))
                continue;
            Seen entry {object.value(QStringLiteral("role")).toString(),
                        object.value(QStringLiteral("showing")).toBool(),
                        {}};
            for (const QJsonValue &action : object.value(QStringLiteral("actions")).toArray())
                entry.actions.append(action.toString());
            objects.insert(name, entry);
        }
        return objects;
    }

    bool press(const QString &name)
    {
        const bool pressed = runScript({name}).has_value();
        QTest::qWait(200);
        return pressed;
    }

    void closePopups()
    {
        while (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(PrivateSessionBus::current() && !PrivateSessionBus::current()->address().isEmpty(),
                 "dbus-daemon is missing: run ./lumo setup");
        QVERIFY2(m_windowManager.start(), "openbox or xdotool is missing: run ./lumo setup");
        QByteArray playlist = "#EXTM3U\n";
        for (int i = 0; i < 5; ++i)
            playlist += "#EXTINF:-1 group-title=\"News\",Channel " + QByteArray::number(i)
                + "\nhttp://127.0.0.1:9/" + QByteArray::number(i) + ".m3u8\n";
        m_server.route(QStringLiteral("/list.m3u"), HttpResponse::text(playlist));
        QVERIFY(m_server.listen());
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_model->setFileChooser([](const OpenPanelRequest &) { return std::optional<QString>(); });
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->resize(1000, 640);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 5, 10000);
        content()->setShowSidebar(true);
        QTest::qWait(ContentView::sidebarAnimationMs + 300);
    }

    void cleanupTestCase()
    {
        m_window.reset();
        m_model.reset();
    }

    void everyControlHasANameAndARole()
    {
        const QHash<QString, Seen> objects = seen();
        QVERIFY2(!objects.isEmpty(), "the window is not on the accessibility bus");
        const QList<std::pair<QString, QString>> expected {
            {QStringLiteral("Skip back 10 seconds"), QStringLiteral("push button")},
            {QStringLiteral("Play"), QStringLiteral("push button")},
            {QStringLiteral("Stop"), QStringLiteral("push button")},
            {QStringLiteral("Skip forward 10 seconds"), QStringLiteral("push button")},
            {QStringLiteral("Show or hide sidebar"), QStringLiteral("push button")},
            {QStringLiteral("Position"), QStringLiteral("slider")},
            {QStringLiteral("Mute or unmute"), QStringLiteral("push button")},
            {QStringLiteral("Volume"), QStringLiteral("slider")},
            {QStringLiteral("Choose recording quality"), QStringLiteral("push button")},
            {QStringLiteral("Video display mode"), QStringLiteral("push button")},
            {QStringLiteral("Enter full screen"), QStringLiteral("push button")},
            {QStringLiteral("Add an optional movie or playlist name"),
             QStringLiteral("push button")},
            {QStringLiteral("Stream address"), QStringLiteral("text")},
            {QStringLiteral("Clear playlist and stop network playback"),
             QStringLiteral("push button")},
            {QStringLiteral("Import a local M3U playlist"), QStringLiteral("push button")},
            {QStringLiteral("Open the stream manually"), QStringLiteral("push button")},
            {QStringLiteral("Search channels"), QStringLiteral("text")},
            {QStringLiteral("Filter by country"), QStringLiteral("push button")},
            {QStringLiteral("Filter by category"), QStringLiteral("push button")},
            {QStringLiteral("Channels"), QStringLiteral("list")},
        };
        for (const auto &[name, role] : expected) {
            QVERIFY2(objects.contains(name), qPrintable(QStringLiteral("no \"%1\"").arg(name)));
            const Seen &object = objects.value(name);
            QVERIFY2(object.showing, qPrintable(name));
            QVERIFY2(object.role == role, qPrintable(name + QStringLiteral(": ") + object.role));
            if (role == u"push button")
                QVERIFY2(!object.actions.isEmpty(), qPrintable(name));
        }
    }

    void everyButtonIsPressedThroughItsAction()
    {
        // The sidebar's button hides it and shows it again.
        QVERIFY(press(QStringLiteral("Show or hide sidebar")));
        QTRY_VERIFY(!content()->showsSidebar());
        QVERIFY(press(QStringLiteral("Show or hide sidebar")));
        QTRY_VERIFY(content()->showsSidebar());
        QTest::qWait(ContentView::sidebarAnimationMs + 200);
        QVERIFY(press(QStringLiteral("Mute or unmute")));
        QTRY_VERIFY(m_model->isMuted());
        QVERIFY(press(QStringLiteral("Add an optional movie or playlist name")));
        QTRY_VERIFY(content()->networkPanel()->showsMovieName());
        // Menus open.
        for (const QString &menu :
             {QStringLiteral("Video display mode"), QStringLiteral("Choose recording quality"),
              QStringLiteral("Filter by country"), QStringLiteral("Filter by category")}) {
            QVERIFY2(press(menu), qPrintable(menu));
            QTRY_VERIFY2(QApplication::activePopupWidget(), qPrintable(menu));
            closePopups();
        }
        m_model->play(QUrl(QStringLiteral("file:///media/clip.mp4")), std::nullopt, false);
        QTRY_VERIFY(m_model->isPlaying());
        QVERIFY(press(QStringLiteral("Pause")));
        QTRY_VERIFY(!m_model->isPlaying());
        QVERIFY(press(QStringLiteral("Play")));
        QTRY_VERIFY(m_model->isPlaying());
        for (const QString &button :
             {QStringLiteral("Skip back 10 seconds"), QStringLiteral("Skip forward 10 seconds"),
              QStringLiteral("Import a local M3U playlist"),
              QStringLiteral("Open the stream manually")})
            QVERIFY2(press(button), qPrintable(button));
        QVERIFY(press(QStringLiteral("Stop")));
        QTRY_VERIFY(!m_model->isPlaying());
        QVERIFY(press(QStringLiteral("Clear playlist and stop network playback")));
        QTRY_VERIFY(m_model->playlist().isEmpty());
        QVERIFY(press(QStringLiteral("Enter full screen")));
        QTRY_VERIFY(m_window->isFullScreen());
    }
};

PRIVATE_SESSION_BUS_TEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
