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

    // A live item that has played, then breaks off as its server goes: the item ends.
    void breakOffAfterPlaying()
    {
        playLive();
        m_player->setPosition(1);
        QTest::qWait(1200); // the watch has seen it move
        m_player->replaceCurrentItem(std::nullopt);
        Q_EMIT m_player->endReached();
        QVERIFY(m_model->isBuffering());
    }

    bool showsReconnectNotice() const
    {
        return m_model->toastMessage().startsWith(QStringLiteral("Reconnecting"));
    }

private Q_SLOTS:
    void init()
    {
        auto player = std::make_unique<ScriptedMediaPlayer>();
        m_player = player.get();
        m_model = std::make_unique<PlayerModel>(std::move(player));
    }
    void cleanup() { m_model.reset(); }

    void reconnectNoticesCountFromOneAndGoWhenThePictureIsBack()
    {
        QStringList notices;
        connect(m_model.get(), &PlayerModel::toastMessageChanged, this, [&] {
            if (!m_model->toastMessage().isEmpty())
                notices.append(m_model->toastMessage());
        });
        breakOffAfterPlaying();
        // The first try says so while it is pending, counting from 1.
        QTRY_VERIFY_WITH_TIMEOUT(showsReconnectNotice(), 3000);
        QCOMPARE(notices.constFirst(), QString::fromUtf8("Reconnecting… (1/5)"));
        // Back: the notice goes with the wait.
        m_player->replaceCurrentItem(QUrl(QStringLiteral("http://127.0.0.1:9/live/index.m3u8")));
        m_player->setPosition(5);
        QTRY_VERIFY_WITH_TIMEOUT(!showsReconnectNotice(), 3000);
        QVERIFY(!m_model->isBuffering());
        QCOMPARE(notices.size(), 1);
    }

    void aPictureBackDuringTheWaitEndsTheTries()
    {
        QStringList notices;
        connect(m_model.get(), &PlayerModel::toastMessageChanged, this, [&] {
            if (!m_model->toastMessage().isEmpty())
                notices.append(m_model->toastMessage());
        });
        breakOffAfterPlaying();
        // It moves again before the first try is due: no try, no notice.
        m_player->replaceCurrentItem(QUrl(QStringLiteral("http://127.0.0.1:9/live/index.m3u8")));
        m_player->setPosition(3);
        QTest::qWait(2500);
        QVERIFY2(notices.isEmpty(), qPrintable(notices.join(u'|')));
        QVERIFY(!m_model->isBuffering());
    }

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
