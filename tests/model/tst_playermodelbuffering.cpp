// Timing rules of the model that need exact stalls: the buffering indicator's delay and the
// notice's lifetime.
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"

#include <QKeyEvent>
#include <QSignalSpy>
#include <QTest>

class TestPlayerModelBuffering : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    ScriptedMediaPlayer *m_player = nullptr;

    void playLive()
    {
        m_model->play(QUrl(QStringLiteral("http://127.0.0.1:9/live/index.m3u8")), std::nullopt,
                      true);
    }

private Q_SLOTS:
    void init()
    {
        auto player = std::make_unique<ScriptedMediaPlayer>();
        m_player = player.get();
        m_model = std::make_unique<PlayerModel>(std::move(player));
    }
    void cleanup() { m_model.reset(); }

    void aShortStallNeverShowsTheIndicator()
    {
        playLive();
        m_player->setWaiting(true);
        QTest::qWait(200);
        m_player->setWaiting(false);
        QTest::qWait(600);
        QVERIFY(!m_model->isBuffering());
    }

    void aLongStallShowsItAfterTheDelayAndItGoesAway()
    {
        playLive();
        m_player->setWaiting(true);
        QVERIFY(!m_model->isBuffering());
        QTest::qWait(100);
        QVERIFY(!m_model->isBuffering());
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isBuffering(), 3000);
        m_player->setWaiting(false);
        QVERIFY(!m_model->isBuffering());
    }

    void aStallOfAFileNeverShowsIt()
    {
        m_model->play(QUrl(QStringLiteral("http://127.0.0.1:9/movie.mp4")), std::nullopt, false);
        m_player->setWaiting(true);
        QTest::qWait(900);
        QVERIFY(!m_model->isBuffering());
    }

    void theIndicatorIsNotShownIfTheStreamStoppedBeingLive()
    {
        playLive();
        m_player->setWaiting(true);
        // A file replaces the live stream before the delay ends, still stalled.
        m_model->play(QUrl(QStringLiteral("http://127.0.0.1:9/movie.mp4")), std::nullopt, false);
        m_player->setWaiting(true);
        QTest::qWait(900);
        QVERIFY(!m_model->isBuffering());
    }

    void stopHidesTheIndicator()
    {
        playLive();
        m_player->setWaiting(true);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->isBuffering(), 3000);
        m_model->stop();
        QVERIFY(!m_model->isBuffering());
    }

    void aNewNoticeReplacesTheOldAndStaysItsFullTime()
    {
        m_model->showToast(QStringLiteral("first"));
        QCOMPARE(m_model->toastMessage(), "first");
        QTest::qWait(2000);
        m_model->showToast(QStringLiteral("second"));
        QCOMPARE(m_model->toastMessage(), "second");
        // The first notice's 2.8 s are over by now; the second stays.
        QTest::qWait(1500);
        QCOMPARE(m_model->toastMessage(), "second");
        QTRY_VERIFY_WITH_TIMEOUT(m_model->toastMessage().isNull(), 3000);
    }

    void aPendingNoticeEndsQuietlyWithTheModel()
    {
        m_model->installKeyboardShortcuts();
        m_model->showToast(QStringLiteral("bye"));
        playLive();
        m_player->setWaiting(true);
        QSignalSpy toasts(m_model.get(), &PlayerModel::toastMessageChanged);
        QSignalSpy buffering(m_model.get(), &PlayerModel::isBufferingChanged);
        QSignalSpy gone(m_model.get(), &QObject::destroyed);
        m_model.reset();
        QCOMPARE(gone.count(), 1);
        // Past both delays nothing fired into the destroyed model (the sanitizers would see
        // it), and its monitors are gone: a key and a pointer move reach no model.
        QTest::qWait(3000);
        QCOMPARE(toasts.count(), 0);
        QCOMPARE(buffering.count(), 0);
        QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
        QObject target;
        QCoreApplication::sendEvent(&target, &space);
        QCOMPARE(toasts.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestPlayerModelBuffering)
#include "tst_playermodelbuffering.moc"
