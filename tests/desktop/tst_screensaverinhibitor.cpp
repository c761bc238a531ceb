// The screen saver is held off while a video plays, with real libmpv and a private session bus.
// No screen saver runs here, so a small stand-in service on that bus records the calls.
#include "desktop/screensaverinhibitor.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "privatesessionbus.h"
#include "testmedia.h"

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// Answers as a desktop's screen saver does and remembers who holds it off.
class FakeScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QList<uint> held;
    int inhibitCalls = 0;
    int uninhibitCalls = 0;

public Q_SLOTS:
    uint Inhibit(const QString &application, const QString &reason)
    {
        Q_UNUSED(reason);
        if (application.isEmpty())
            return 0;
        ++inhibitCalls;
        held.append(m_next);
        return m_next++;
    }
    void UnInhibit(uint cookie)
    {
        ++uninhibitCalls;
        held.removeAll(cookie);
    }

private:
    uint m_next = 41;
};

class TestScreenSaverInhibitor : public QObject
{
    Q_OBJECT

private:
    PrivateSessionBus *m_bus = PrivateSessionBus::current();
    QTemporaryDir m_media;
    FakeScreenSaver m_screenSaver;
    std::unique_ptr<PlayerModel> m_model;

    QUrl media(const QString &name) const { return QUrl::fromLocalFile(m_media.filePath(name)); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_bus && !m_bus->address().isEmpty(), "dbus-daemon is missing: run ./lumo setup");
        // Nothing made before the bus (the application's platform plugin) reached another bus.
        QVERIFY(m_bus->isSessionBusOfThisProcess());
        QVERIFY(QDBusConnection::sessionBus().isConnected());
        // The stand-in has a connection of its own, as another process would.
        QDBusConnection service = QDBusConnection::connectToBus(m_bus->address(), "screensaver");
        QVERIFY(service.isConnected());
        QVERIFY(service.registerObject(QString::fromLatin1(ScreenSaverInhibitor::path),
                                       &m_screenSaver, QDBusConnection::ExportAllSlots));
        QVERIFY(service.registerService(QString::fromLatin1(ScreenSaverInhibitor::service)));

        QVERIFY(TestMedia::makeClip(m_media.filePath("video.mp4"), 30));
        QProcess ffmpeg;
        ffmpeg.start("ffmpeg",
                     {"-v", "error", "-y", "-f", "lavfi", "-i", "sine=f=440:d=30", "-c:a", "aac",
                      m_media.filePath("sound.m4a")});
        QVERIFY(ffmpeg.waitForFinished(30'000) && ffmpeg.exitCode() == 0);
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_screenSaver.held.clear();
        m_screenSaver.inhibitCalls = 0;
        m_screenSaver.uninhibitCalls = 0;
    }

    void cleanup() { m_model.reset(); }

    void aPlayingVideoHoldsTheScreenSaverOffUntilPaused()
    {
        ScreenSaverInhibitor inhibitor(*m_model);
        QVERIFY(!inhibitor.isInhibiting());
        m_model->play(media("video.mp4"), std::nullopt, false);
        QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.held.size(), 1, 15'000);
        QVERIFY(inhibitor.isInhibiting());

        m_model->togglePlayback();
        QTRY_VERIFY(m_screenSaver.held.isEmpty());
        QCOMPARE(m_screenSaver.uninhibitCalls, 1);

        m_model->togglePlayback();
        QTRY_COMPARE(m_screenSaver.held.size(), 1);
        QCOMPARE(m_screenSaver.inhibitCalls, 2);

        m_model->stop();
        QTRY_VERIFY(m_screenSaver.held.isEmpty());
    }

    void soundAloneLetsTheScreenSaverCome()
    {
        ScreenSaverInhibitor inhibitor(*m_model);
        m_model->play(media("sound.m4a"), std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isPlaying() && m_model->currentTime() > 0.5, 15'000);
        QTest::qWait(300);
        QCOMPARE(m_screenSaver.inhibitCalls, 0);
        QVERIFY(!inhibitor.isInhibiting());
    }

    void aPlayerThatEndsLetsGo()
    {
        {
            ScreenSaverInhibitor inhibitor(*m_model);
            m_model->play(media("video.mp4"), std::nullopt, false);
            QTRY_COMPARE_WITH_TIMEOUT(m_screenSaver.held.size(), 1, 15'000);
        }
        QTRY_VERIFY(m_screenSaver.held.isEmpty());
    }
};

PRIVATE_SESSION_BUS_TEST_MAIN(TestScreenSaverInhibitor)
#include "tst_screensaverinhibitor.moc"
