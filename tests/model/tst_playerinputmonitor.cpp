// The model's keyboard and pointer monitor, driven through a real window with QTest.
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "testmedia.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

namespace {
// A focusable widget that records the keys that reach it.
class KeyLog final : public QWidget
{
public:
    KeyLog() { setFocusPolicy(Qt::StrongFocus); }
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        // QTest presses the modifier keys themselves too; only the other keys count here.
        static const QList<int> modifierKeys {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt,
                                              Qt::Key_Meta};
        if (!modifierKeys.contains(event->key()))
            keys.append(event->key());
    }
};

constexpr auto command = Qt::ControlModifier;
constexpr auto option = Qt::AltModifier;
} // namespace

class TestPlayerInputMonitor : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_media;
    std::unique_ptr<QWidget> m_window;
    KeyLog *m_keyLog = nullptr;
    QLineEdit *m_field = nullptr;
    std::unique_ptr<PlayerModel> m_model;

    QWindow *window() const { return m_window->windowHandle(); }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window(), Qt::Key(key), modifiers);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(TestMedia::makeClip(m_media.filePath(QStringLiteral("long.mp4")), 600, {64, 48}, 1,
                                    false));
    }

    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(m_window.get());
        m_keyLog = new KeyLog;
        m_field = new QLineEdit;
        layout->addWidget(m_keyLog);
        layout->addWidget(m_field);
        m_window->resize(300, 200);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        // Xvfb has no window manager to activate windows; the application does it itself.
        window()->requestActivate();
        QTRY_COMPARE(QGuiApplication::focusWindow(), window());
        m_keyLog->setFocus();

        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_model->installKeyboardShortcuts();
        m_model->play(QUrl::fromLocalFile(m_media.filePath(QStringLiteral("long.mp4"))),
                      std::nullopt, false);
        QTRY_VERIFY_WITH_TIMEOUT(m_model->duration() > 500, 10000);
        m_model->togglePlayback();
        m_model->skip(-1000);
    }

    void cleanup()
    {
        m_model.reset();
        m_window.reset();
    }

    void arrowsSkip()
    {
        press(Qt::Key_Right, option | command);
        QCOMPARE(m_model->currentTime(), 300.0);
        press(Qt::Key_Left, command);
        QCOMPARE(m_model->currentTime(), 240.0);
        press(Qt::Key_Left, option);
        QCOMPARE(m_model->currentTime(), 220.0);
        press(Qt::Key_Right);
        QCOMPARE(m_model->currentTime(), 225.0);
        press(Qt::Key_Left);
        QCOMPARE(m_model->currentTime(), 220.0);
        QVERIFY(m_keyLog->keys.isEmpty()); // every one of them was consumed
    }

    void shiftAndControlArrowsPassOn()
    {
        press(Qt::Key_Right, Qt::ShiftModifier);
        press(Qt::Key_Left, Qt::MetaModifier);
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_keyLog->keys, (QList<int> {Qt::Key_Right, Qt::Key_Left}));
    }

    void installingTwiceKeepsOneMonitor()
    {
        m_model->installKeyboardShortcuts();
        press(Qt::Key_Right);
        QCOMPARE(m_model->currentTime(), 5.0);
    }

    void spaceTogglesPlayback()
    {
        QVERIFY(!m_model->isPlaying());
        press(Qt::Key_Space);
        QVERIFY(m_model->isPlaying());
        press(Qt::Key_Space, Qt::ShiftModifier | command);
        QVERIFY(!m_model->isPlaying());
        QVERIFY(m_keyLog->keys.isEmpty());
    }

    void aFocusedTextFieldKeepsTheSpace()
    {
        m_field->setFocus();
        QTRY_VERIFY(m_field->hasFocus());
        press(Qt::Key_Space);
        press(Qt::Key_Right);
        QCOMPARE(m_field->text(), " ");
        QVERIFY(!m_model->isPlaying());
        QCOMPARE(m_model->currentTime(), 0.0);
        // A read-only field types nothing, so the player has the keys.
        m_field->setReadOnly(true);
        press(Qt::Key_Space);
        QVERIFY(m_model->isPlaying());
    }

    void commandKStops()
    {
        press(Qt::Key_K);
        QCOMPARE(m_keyLog->keys, QList<int> {Qt::Key_K});
        QVERIFY(m_model->player().hasItem());
        press(Qt::Key_K, command);
        QCOMPARE(m_model->title(), "No Media Selected");
        QVERIFY(!m_model->player().hasItem());
    }

    void repeatedKeysPassOn()
    {
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(window(), &repeated);
        QCOMPARE(m_model->currentTime(), 0.0);
        QCOMPARE(m_keyLog->keys, QList<int> {Qt::Key_Right});
    }

    void pointerMovesAreReportedWithTheirWindow()
    {
        QSignalSpy moved(&PlayerNotifications::shared(), &PlayerNotifications::playerMouseMoved);
        QTest::mouseMove(window(), QPoint(40, 40));
        QTest::mouseMove(window(), QPoint(60, 50));
        QTRY_VERIFY(!moved.isEmpty());
        QCOMPARE(moved.constLast().constFirst().value<QWindow *>(), window());
        QCOMPARE(PlayerNotifications::playerMouseMovedName, u"LumoMediaPlayer.playerMouseMoved");
    }

    void theMonitorGoesWithTheModel()
    {
        m_model.reset();
        press(Qt::Key_Right);
        press(Qt::Key_Space);
        QCOMPARE(m_keyLog->keys, (QList<int> {Qt::Key_Right, Qt::Key_Space}));
    }
};

QTEST_MAIN(TestPlayerInputMonitor)
#include "tst_playerinputmonitor.moc"
