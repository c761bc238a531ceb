// The player's MPRIS service on a private session bus, driven from another bus connection as a
// desktop's media keys and sound menu would, with real libmpv playing.
#include "desktop/mprisservice.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "privatesessionbus.h"
#include "testmedia.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString service = QStringLiteral("org.mpris.MediaPlayer2.LumoMediaPlayer");
const QString path = QStringLiteral("/org/mpris/MediaPlayer2");
const QString root = QStringLiteral("org.mpris.MediaPlayer2");
const QString player = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
} // namespace

// What the desktop hears of the player's changes.
class ChangeListener : public QObject
{
    Q_OBJECT

public:
    QList<QVariantMap> changes;
    QList<qlonglong> seeks; // microseconds, as Seeked says

    QVariant last(const QString &name) const
    {
        for (auto it = changes.crbegin(); it != changes.crend(); ++it)
            if (it->contains(name))
                return it->value(name);
        return {};
    }

public Q_SLOTS:
    void seeked(qlonglong position) { seeks.append(position); }
    void changed(const QString &interface, const QVariantMap &values, const QStringList &)
    {
        if (interface == player)
            changes.append(values);
    }
};

class TestMpris : public QObject
{
    Q_OBJECT

private:
    PrivateSessionBus *m_bus = PrivateSessionBus::current();
    QTemporaryDir m_media;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<MprisService> m_service;
    int m_raised = 0;
    int m_quit = 0;
    ChangeListener m_listener;

    static QDBusConnection desktop() { return QDBusConnection(QStringLiteral("desktop")); }

    // Calls over the bus without blocking the thread the service answers on.
    static QDBusMessage call(const QString &interface, const QString &method,
                             const QVariantList &arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        QDBusPendingCall pending = desktop().asyncCall(message);
        if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 10'000))
            return {};
        return pending.reply();
    }
    static QVariant property(const QString &interface, const QString &name)
    {
        const QDBusMessage reply = call(properties, QStringLiteral("Get"), {interface, name});
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return {};
        return reply.arguments().constFirst().value<QDBusVariant>().variant();
    }
    static QVariantMap metadata()
    {
        return qdbus_cast<QVariantMap>(
            property(player, QStringLiteral("Metadata")).value<QDBusArgument>());
    }
    static double seconds(const QVariant &microseconds) { return microseconds.toLongLong() / 1e6; }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_bus && !m_bus->address().isEmpty(), "dbus-daemon is missing: run ./lumo setup");
        // Nothing made before the bus (the application's platform plugin) reached another bus.
        QVERIFY(m_bus->isSessionBusOfThisProcess());
        QVERIFY(TestMedia::makeClip(m_media.filePath("video.mp4"), 30));
        QVERIFY(QDBusConnection::connectToBus(m_bus->address(), QStringLiteral("desktop"))
                    .isConnected());
        QVERIFY(desktop().connect(service, path, properties, QStringLiteral("PropertiesChanged"),
                                  &m_listener, SLOT(changed(QString, QVariantMap, QStringList))));
        QVERIFY(desktop().connect(service, path, player, QStringLiteral("Seeked"), &m_listener,
                                  SLOT(seeked(qlonglong))));
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_service
            = std::make_unique<MprisService>(*m_model,
                                             MprisService::WindowActions {[this] { ++m_raised; },
                                                                          [this] {
                                                                              ++m_quit;
                                                                          }});
        QVERIFY(m_service->isRegistered());
    }

    void cleanupTestCase()
    {
        m_service.reset();
        m_model.reset();
    }

    void theDesktopFindsThePlayerByItsName()
    {
        QCOMPARE(property(root, QStringLiteral("Identity")).toString(), "LumoMediaPlayerPro");
        QCOMPARE(property(root, QStringLiteral("DesktopEntry")).toString(), "LumoMediaPlayer");
        QVERIFY(property(root, QStringLiteral("CanRaise")).toBool());
        QCOMPARE(property(player, QStringLiteral("PlaybackStatus")).toString(), "Stopped");
        QVERIFY(!property(player, QStringLiteral("CanPlay")).toBool());
        QVERIFY(!property(player, QStringLiteral("CanSeek")).toBool());
        call(root, QStringLiteral("Raise"));
        QTRY_COMPARE(m_raised, 1);
        call(root, QStringLiteral("Quit"));
        QTRY_COMPARE(m_quit, 1);
    }

    void mediaKeysDriveAPlayingFile()
    {
        m_model->play(QUrl::fromLocalFile(m_media.filePath("video.mp4")), std::nullopt, false);
        QTRY_COMPARE_WITH_TIMEOUT(m_listener.last("PlaybackStatus").toString(), "Playing", 15'000);
        QTRY_VERIFY_WITH_TIMEOUT(property(player, QStringLiteral("CanSeek")).toBool(), 15'000);
        const QVariantMap playing = metadata();
        QCOMPARE(playing.value("xesam:title").toString(), "video.mp4");
        QVERIFY(std::abs(seconds(playing.value("mpris:length")) - 30) < 0.1);

        call(player, QStringLiteral("PlayPause"));
        QTRY_VERIFY(!m_model->isPlaying());
        QTRY_COMPARE(m_listener.last("PlaybackStatus").toString(), "Paused");
        call(player, QStringLiteral("Play"));
        QTRY_VERIFY(m_model->isPlaying());
        call(player, QStringLiteral("Pause"));
        QTRY_VERIFY(!m_model->isPlaying());
        QCOMPARE(property(player, QStringLiteral("PlaybackStatus")).toString(), "Paused");

        const QDBusObjectPath track = playing.value("mpris:trackid").value<QDBusObjectPath>();
        call(player, QStringLiteral("SetPosition"),
             {QVariant::fromValue(track), QVariant::fromValue(qlonglong(10'000'000))});
        QTRY_VERIFY_WITH_TIMEOUT(std::abs(m_model->currentTime() - 10) < 0.2, 10'000);
        call(player, QStringLiteral("Seek"), {QVariant::fromValue(qlonglong(5'000'000))});
        QTRY_VERIFY_WITH_TIMEOUT(std::abs(m_model->currentTime() - 15) < 0.2, 10'000);
        QVERIFY(std::abs(seconds(property(player, QStringLiteral("Position"))) - 15) < 0.2);
        // Another track's position, or one past the end, is not for this one.
        call(player, QStringLiteral("SetPosition"),
             {QVariant::fromValue(QDBusObjectPath("/org/mpris/MediaPlayer2/Track/999")),
              QVariant::fromValue(qlonglong(2'000'000))});
        call(player, QStringLiteral("SetPosition"),
             {QVariant::fromValue(track), QVariant::fromValue(qlonglong(99'000'000))});
        QTest::qWait(300);
        QVERIFY(std::abs(m_model->currentTime() - 15) < 0.2);

        call(properties, QStringLiteral("Set"),
             {player, QStringLiteral("Volume"), QVariant::fromValue(QDBusVariant(0.25))});
        QTRY_COMPARE(m_model->volume(), 0.25);
        QTRY_COMPARE(m_listener.last("Volume").toDouble(), 0.25);

        call(player, QStringLiteral("Stop"));
        QTRY_COMPARE(m_listener.last("PlaybackStatus").toString(), "Stopped");
        QVERIFY(!property(player, QStringLiteral("CanPause")).toBool());
    }

    void theRealProgramAnswersDbusSend()
    {
        // The program itself on the same bus, driven by the desktop's own command-line tool.
        m_service.reset();
        QTemporaryDir runtime;
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", runtime.path());
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationDirPath() + "/LumoMediaPlayer", {});
        QVERIFY(program.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(desktop().interface()->isServiceRegistered(service).value(),
                                 30'000);
        auto dbusSend = [](const QStringList &arguments) {
            QProcess send;
            send.start("dbus-send",
                       QStringList {"--session", "--print-reply", "--dest=" + service, path}
                           + arguments);
            return send.waitForFinished(10'000) && send.exitCode() == 0
                ? QString::fromUtf8(send.readAllStandardOutput())
                : QString();
        };
        const QString statusCall[]
            = {"org.freedesktop.DBus.Properties.Get", "string:" + player, "string:PlaybackStatus"};
        QVERIFY(
            dbusSend({"org.freedesktop.DBus.Properties.Get", "string:" + root, "string:Identity"})
                .contains("LumoMediaPlayerPro"));
        QVERIFY(dbusSend({statusCall[0], statusCall[1], statusCall[2]}).contains("Stopped"));
        QVERIFY(
            !dbusSend({player + ".OpenUri",
                       "string:" + QUrl::fromLocalFile(m_media.filePath("video.mp4")).toString()})
                 .isNull());
        QTRY_VERIFY_WITH_TIMEOUT(
            dbusSend({statusCall[0], statusCall[1], statusCall[2]}).contains("Playing"), 30'000);
        QVERIFY(!dbusSend({player + ".Pause"}).isNull());
        QTRY_VERIFY_WITH_TIMEOUT(
            dbusSend({statusCall[0], statusCall[1], statusCall[2]}).contains("Paused"), 10'000);
        QVERIFY(!dbusSend({root + ".Quit"}).isNull());
        QVERIFY(program.waitForFinished(30'000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);

        // The name is free again for the tests after this one.
        QTRY_VERIFY(!desktop().interface()->isServiceRegistered(service).value());
        m_service = std::make_unique<MprisService>(*m_model, MprisService::WindowActions {});
        QVERIFY(m_service->isRegistered());
    }

    void seeksMadeInThePlayerAreAnnounced()
    {
        m_model->play(QUrl::fromLocalFile(m_media.filePath("video.mp4")), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(property(player, QStringLiteral("CanSeek")).toBool(), 15'000);
        m_model->togglePlayback();
        QTRY_VERIFY(!m_model->isPlaying());
        m_listener.seeks.clear();
        // The keys and the skip buttons skip; the position slider seeks where it is released.
        m_model->skip(20);
        QTRY_COMPARE(m_listener.seeks.size(), 1);
        QVERIFY(std::abs(seconds(m_listener.seeks.last()) - 20) < 0.5);
        m_model->seek(12.5);
        QTRY_COMPARE(m_listener.seeks.size(), 2);
        QCOMPARE(m_listener.seeks.last(), 12'500'000);
        // One announcement for a seek asked over the bus too.
        call(player, QStringLiteral("Seek"), {QVariant::fromValue(qlonglong(1'000'000))});
        QTRY_COMPARE(m_listener.seeks.size(), 3);
        QTest::qWait(300);
        QCOMPARE(m_listener.seeks.size(), 3);
        m_model->stop();
    }

    void anItemThatFailsWhilePausedIsStopped()
    {
        m_model->play(QUrl::fromLocalFile(m_media.filePath("missing.mp4")), std::nullopt, false);
        // Paused before the player finds out that the file is not there.
        m_model->togglePlayback();
        QTRY_VERIFY(!m_model->player().hasItem());
        QTRY_COMPARE(m_listener.last("PlaybackStatus").toString(), "Stopped");
        QCOMPARE(m_listener.last("CanPlay").toBool(), false);
        QCOMPARE(property(player, QStringLiteral("PlaybackStatus")).toString(), "Stopped");
        m_model->stop();
    }

    void aVolumeThatIsNoNumberIsIgnored()
    {
        m_model->setVolume(0.5);
        for (const double volume : {qQNaN(), qInf(), -qInf()}) {
            call(properties, QStringLiteral("Set"),
                 {player, QStringLiteral("Volume"), QVariant::fromValue(QDBusVariant(volume))});
            QTest::qWait(100);
            QCOMPARE(m_model->volume(), 0.5);
        }
        call(properties, QStringLiteral("Set"),
             {player, QStringLiteral("Rate"), QVariant::fromValue(QDBusVariant(2.0))});
        QCOMPARE(property(player, QStringLiteral("Rate")).toDouble(), 1.0);
    }

    void openUriTakesOnlyFilesAndWebAddresses_data()
    {
        QTest::addColumn<QString>("uri");
        const QString probe = QStringLiteral(LUMO_PROBE_LIBRARY);
        const QString clip = m_media.filePath("video.mp4");
        // mpv reads these itself: an edit list whose part is an FFmpeg filter graph, and the
        // graph alone; its ladspa filter loads any library it is given.
        QTest::newRow("edit list") << "edl://" + clip + ";file=av://lavfi:ladspa=file=" + probe;
        QTest::newRow("filter graph") << "av://lavfi:ladspa=file=" + probe;
        QTest::newRow("lavfi source") << QStringLiteral("av://lavfi:sine");
        QTest::newRow("no scheme") << clip;
        QTest::newRow("ftp") << QStringLiteral("ftp://files.example/clip.mp4");
        QTest::newRow("file on a host") << QStringLiteral("file://otherhost/clip.mp4");
    }

    void openUriTakesOnlyFilesAndWebAddresses()
    {
        QFETCH(QString, uri);
        const QString marker = m_media.filePath("probe-loaded");
        qputenv("LUMO_PROBE_MARKER", QFile::encodeName(marker));
        QVERIFY(QFileInfo(QStringLiteral(LUMO_PROBE_LIBRARY)).isFile());
        m_model->stop();
        const QDBusMessage reply = call(player, QStringLiteral("OpenUri"), {uri});
        QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
        QCOMPARE(reply.errorName(), "org.freedesktop.DBus.Error.NotSupported");
        QTest::qWait(1000);
        QVERIFY(!m_model->player().hasItem());
        QVERIFY(!QFile::exists(marker));
        qunsetenv("LUMO_PROBE_MARKER");
    }

    void openUriPlaysAWebAddressAsTyped()
    {
        const QDBusMessage reply
            = call(player, QStringLiteral("OpenUri"), {QStringLiteral("https://youtu.be/abc123")});
        QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
        // A video-service address goes to the web player, as when typed.
        QTRY_VERIFY(m_model->youtubeContent().has_value());
        QVERIFY(!m_model->player().hasItem());
        m_model->stop();
    }

    void aLiveStreamHasNoLengthAndCannotSeek()
    {
        m_model->play(QUrl::fromLocalFile(m_media.filePath("video.mp4")), QStringLiteral("Live"),
                      true);
        QTRY_COMPARE_WITH_TIMEOUT(m_listener.last("PlaybackStatus").toString(), "Playing", 15'000);
        QTest::qWait(500);
        QVERIFY(!property(player, QStringLiteral("CanSeek")).toBool());
        QVERIFY(!metadata().contains("mpris:length"));
        QCOMPARE(metadata().value("xesam:title").toString(), "Live");
        m_model->stop();
    }
};

PRIVATE_SESSION_BUS_TEST_MAIN(TestMpris)
#include "tst_mpris.moc"
