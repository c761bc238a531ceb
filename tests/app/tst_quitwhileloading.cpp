// Quitting the real program while a large channel list is still being parsed: the parse is
// stopped before the process ends, so nothing it touches is destroyed under it.
#include "httpserver/localhttpserver.h"
#include "privatesessionbus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString service = QStringLiteral("org.mpris.MediaPlayer2.LumoMediaPlayer");
} // namespace

class TestQuitWhileLoading : public QObject
{
    Q_OBJECT

private:
    PrivateSessionBus *m_bus = PrivateSessionBus::current();
    LocalHttpServer m_server;

    static QDBusConnection desktop() { return QDBusConnection(QStringLiteral("desktop")); }

    static QByteArray channels(int count)
    {
        QByteArray text = "#EXTM3U\n";
        for (int i = 0; i < count; ++i) {
            text += "#EXTINF:-1 tvg-id=\"ch" + QByteArray::number(i) + ".us\" group-title=\"Group "
                + QByteArray::number(i % 50) + "\",Channel " + QByteArray::number(i)
                + "\nhttp://stream.example.com/live/" + QByteArray::number(i) + ".ts\n";
        }
        return text;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_bus && !m_bus->address().isEmpty(), "dbus-daemon is missing: run ./lumo setup");
        QVERIFY(QDBusConnection::connectToBus(m_bus->address(), QStringLiteral("desktop"))
                    .isConnected());
        m_server.route(QStringLiteral("/large.m3u"),
                       HttpResponse::text(channels(200'000), "audio/x-mpegurl"));
        QVERIFY(m_server.listen());
    }

    void quittingWhileALargeListLoadsEndsCleanly_data()
    {
        QTest::addColumn<int>("delay");
        // Spread over the download, the parse and the index build.
        for (int run = 0; run < 20; ++run)
            QTest::addRow("quit %d ms after the request", run * 25) << run * 25;
    }

    void quittingWhileALargeListLoadsEndsCleanly()
    {
        QFETCH(int, delay);
        QTemporaryDir runtime;
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
        // Under ASan the question is a crash on the way out. Its leak check would also report
        // what the video drivers that mpv probes and unloads keep, which no name can suppress.
        const QString asan = environment.value(QStringLiteral("ASAN_OPTIONS"));
        environment.insert(QStringLiteral("ASAN_OPTIONS"),
                           asan + (asan.isEmpty() ? "" : ":") + "detect_leaks=0");
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        const int requests = m_server.requestCount(QStringLiteral("/large.m3u"));
        program.start(QCoreApplication::applicationDirPath() + "/LumoMediaPlayer",
                      {m_server.url(QStringLiteral("/large.m3u")).toString()});
        QVERIFY(program.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(m_server.requestCount(QStringLiteral("/large.m3u")) > requests,
                                 60'000);
        QTest::qWait(delay);
        QDBusMessage quit = QDBusMessage::createMethodCall(
            service, QStringLiteral("/org/mpris/MediaPlayer2"),
            QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Quit"));
        QDBusPendingCall pending = desktop().asyncCall(quit);
        QVERIFY(QTest::qWaitFor([&] { return pending.isFinished(); }, 10'000));
        QVERIFY(!pending.isError());
        QVERIFY(QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, 30'000));
        const QByteArray output = program.readAll();
        QVERIFY2(program.exitStatus() == QProcess::NormalExit, output.constData());
        QVERIFY2(program.exitCode() == 0, output.constData());
        // The name is free for the next launch.
        QTRY_VERIFY(!desktop().interface()->isServiceRegistered(service).value());
    }
};

PRIVATE_SESSION_BUS_TEST_MAIN(TestQuitWhileLoading)
#include "tst_quitwhileloading.moc"
