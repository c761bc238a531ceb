// One player per user, with the real program: a second launch hands its file to the running
// window and ends, two launches at once end with one window, and the message between them
// refuses what is not one.
#include "app/launchmessage.h"
#include "app/singleinstance.h"
#include "testmedia.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

class TestSingleInstance : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;

    struct Launch
    {
        std::unique_ptr<QProcess> process = std::make_unique<QProcess>();
        QByteArray output;

        const QByteArray &read()
        {
            output += process->readAll();
            return output;
        }
    };

    // The program, started in the media folder with its own runtime folder.
    std::unique_ptr<Launch> launch(const QTemporaryDir &runtime, const QStringList &arguments)
    {
        auto started = std::make_unique<Launch>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
        // Says when a video starts playing.
        environment.insert(QStringLiteral("LUMO_DEBUG"), QStringLiteral("1"));
        started->process->setProcessEnvironment(environment);
        started->process->setWorkingDirectory(m_media.path());
        started->process->setProcessChannelMode(QProcess::MergedChannels);
        started->process->start(QCoreApplication::applicationDirPath() + "/LumoMediaPlayer",
                                arguments);
        return started;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_media.isValid());
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("clip.mp4")), 20));
    }

    void aSecondLaunchHandsItsFileToTheRunningPlayer()
    {
        QTemporaryDir runtime;
        auto first = launch(runtime, {});
        QVERIFY(first->process->waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(runtime.filePath("LumoMediaPlayer.socket")),
                                 30'000);
        QVERIFY(!first->read().contains("video decoder in use"));

        // A path relative to where the second launch was started.
        auto second = launch(runtime, {QStringLiteral("clip.mp4")});
        QVERIFY(second->process->waitForFinished(30'000));
        QCOMPARE(second->process->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->process->exitCode(), 0);
        QVERIFY2(!second->read().contains("video decoder in use"), second->output.constData());

        QTRY_VERIFY_WITH_TIMEOUT(first->read().contains("video decoder in use"), 30'000);
        QCOMPARE(first->process->state(), QProcess::Running);
    }

    void twoLaunchesAtOnceEndWithOneWindow()
    {
        QTemporaryDir runtime;
        auto one = launch(runtime, {QStringLiteral("clip.mp4")});
        auto other = launch(runtime, {QStringLiteral("clip.mp4")});
        QTRY_VERIFY_WITH_TIMEOUT(one->process->state() == QProcess::NotRunning
                                     || other->process->state() == QProcess::NotRunning,
                                 60'000);
        QTest::qWait(2000);
        Launch &ended = one->process->state() == QProcess::NotRunning ? *one : *other;
        Launch &running = &ended == one.get() ? *other : *one;
        QCOMPARE(running.process->state(), QProcess::Running);
        QCOMPARE(ended.process->exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(running.read().contains("video decoder in use"), 30'000);
    }

    void aFolderThatIsNotPrivateIsNotShared_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("open to group and others") << QStringLiteral("open");
        QTest::newRow("a link to a private folder") << QStringLiteral("link");
        // Only root can give a folder to another user, as one who prepared it would own it.
        if (geteuid() == 0)
            QTest::newRow("another user's") << QStringLiteral("nobody");
    }

    void aFolderThatIsNotPrivateIsNotShared()
    {
        QFETCH(QString, how);
        QTemporaryDir parent;
        const QString real = parent.filePath(QStringLiteral("real"));
        QVERIFY(QDir().mkdir(real));
        const QString folder = how == u"link" ? parent.filePath(QStringLiteral("link")) : real;
        if (how == u"link")
            QVERIFY(QFile::link(real, folder));
        // Whoever prepared it holds a live lock and listens where a launch hands over.
        QLockFile theirLock(real + QStringLiteral("/LumoMediaPlayer.lock"));
        QVERIFY(theirLock.tryLock(0));
        QLocalServer theirs;
        QVERIFY(theirs.listen(real + QStringLiteral("/LumoMediaPlayer.socket")));
        const QByteArray path = QFile::encodeName(real);
        if (how == u"open")
            QCOMPARE(chmod(path.constData(), 0777), 0);
        else if (how == u"nobody")
            QCOMPARE(chown(path.constData(), 65534, 65534), 0);

        SingleInstance instance(folder);
        QCOMPARE(instance.claim({QStringLiteral("http://provider.example/TOKEN/live.m3u8")},
                                QStringLiteral("/")),
                 SingleInstance::Role::running);
        // Nothing was handed to the socket in that folder.
        QTest::qWait(100);
        QVERIFY(!theirs.hasPendingConnections());
        QVERIFY(!theirs.waitForNewConnection(0));
        if (how == u"nobody")
            QCOMPARE(chown(path.constData(), getuid(), getgid()), 0);
    }

    void aConnectionThatSaysNothingIsClosed()
    {
        QTemporaryDir folder;
        SingleInstance running(folder.path());
        QCOMPARE(running.claim({}, QStringLiteral("/")), SingleInstance::Role::running);
        QLocalSocket idle;
        idle.connectToServer(running.socketPath());
        QVERIFY(idle.waitForConnected(2000));
        // A client that never sends holds nothing for long.
        QTRY_COMPARE_WITH_TIMEOUT(idle.state(), QLocalSocket::UnconnectedState, 10'000);
    }

    void aLateAnswerIsWaitedForAndTheArgumentsSentOnce()
    {
        QTemporaryDir folder;
        // A running player that is busy: it takes the arguments and answers 7 s later.
        QLockFile theirLock(folder.filePath(QStringLiteral("LumoMediaPlayer.lock")));
        QVERIFY(theirLock.tryLock(0));
        const QString socket = folder.filePath(QStringLiteral("LumoMediaPlayer.socket"));
        std::atomic<int> messages = 0;
        std::atomic<bool> listening = false;
        std::thread busy([&] {
            QLocalServer server;
            listening = server.listen(socket);
            QDeadlineTimer end(25'000);
            std::vector<std::unique_ptr<QLocalSocket>> clients;
            while (listening && !end.hasExpired()) {
                if (!server.waitForNewConnection(100))
                    continue;
                clients.emplace_back(server.nextPendingConnection());
                QLocalSocket *client = clients.back().get();
                while (!client->canReadLine() && client->waitForReadyRead(1000)) { }
                if (!client->canReadLine())
                    continue;
                ++messages;
                if (messages == 1) {
                    QThread::msleep(7000);
                    client->write("ok\n");
                    client->waitForBytesWritten(1000);
                    end = QDeadlineTimer(3000); // long enough to see a second message
                }
            }
        });
        QTRY_VERIFY(listening);
        SingleInstance second(folder.path());
        const SingleInstance::Role role
            = second.claim({QStringLiteral("clip.mp4")}, QStringLiteral("/"));
        busy.join();
        QCOMPARE(messages.load(), 1);
        QCOMPARE(role, SingleInstance::Role::handedOver);
    }

    void theMessageRefusesWhatIsNotOne()
    {
        const LaunchMessage message {{QStringLiteral("clip one.mp4"), QStringLiteral("é")},
                                     QStringLiteral("/home/ü")};
        const QByteArray line = LaunchMessage::encode(message);
        QVERIFY(line.endsWith('\n'));
        QCOMPARE(line.count('\n'), 1);
        QCOMPARE(LaunchMessage::decode(line), message);
        QVERIFY(!LaunchMessage::decode("not json\n"));
        QVERIFY(!LaunchMessage::decode("[]\n"));
        QVERIFY(!LaunchMessage::decode(R"({"arguments":[1],"workingDirectory":"/"})"));
        QVERIFY(!LaunchMessage::decode(R"({"arguments":["a"]})"));
        QVERIFY(!LaunchMessage::decode(QByteArray(LaunchMessage::maximumBytes + 1, '{')));
    }
};

QTEST_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
