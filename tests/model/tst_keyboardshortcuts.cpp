#include "model/keyboardshortcuts.h"

#include <QTest>

using namespace KeyboardShortcuts;

Q_DECLARE_METATYPE(KeyboardShortcuts::Action)

namespace {
constexpr auto command = Qt::ControlModifier;
constexpr auto option = Qt::AltModifier;
constexpr auto control = Qt::MetaModifier;
constexpr auto shift = Qt::ShiftModifier;
} // namespace

class TestKeyboardShortcuts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rules_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<Action>("expected");
        const Qt::KeyboardModifiers none;
        QTest::newRow("left") << int(Qt::Key_Left) << none << Action(Skip {-5});
        QTest::newRow("right") << int(Qt::Key_Right) << none << Action(Skip {5});
        QTest::newRow("option+command right")
            << int(Qt::Key_Right) << (option | command) << Action(Skip {300});
        QTest::newRow("option+command left")
            << int(Qt::Key_Left) << (option | command) << Action(Skip {-300});
        QTest::newRow("command right")
            << int(Qt::Key_Right) << Qt::KeyboardModifiers(command) << Action(Skip {60});
        QTest::newRow("option left")
            << int(Qt::Key_Left) << Qt::KeyboardModifiers(option) << Action(Skip {-20});
        QTest::newRow("shift right passes on")
            << int(Qt::Key_Right) << Qt::KeyboardModifiers(shift) << Action(PassOn {});
        QTest::newRow("control left passes on")
            << int(Qt::Key_Left) << Qt::KeyboardModifiers(control) << Action(PassOn {});
        QTest::newRow("shift+command still skips a minute")
            << int(Qt::Key_Right) << (shift | command) << Action(Skip {60});
        QTest::newRow("control+option still skips 20 s")
            << int(Qt::Key_Right) << (control | option) << Action(Skip {20});
        QTest::newRow("keypad arrow")
            << int(Qt::Key_Right) << Qt::KeyboardModifiers(Qt::KeypadModifier) << Action(Skip {5});
        QTest::newRow("command K stops")
            << int(Qt::Key_K) << Qt::KeyboardModifiers(command) << Action(Stop {});
        QTest::newRow("K alone passes on") << int(Qt::Key_K) << none << Action(PassOn {});
        QTest::newRow("option K passes on")
            << int(Qt::Key_K) << Qt::KeyboardModifiers(option) << Action(PassOn {});
        QTest::newRow("space") << int(Qt::Key_Space) << none << Action(TogglePlayback {});
        QTest::newRow("space with every modifier")
            << int(Qt::Key_Space) << (shift | command | option | control)
            << Action(TogglePlayback {});
        QTest::newRow("other key") << int(Qt::Key_A) << none << Action(PassOn {});
        QTest::newRow("up arrow") << int(Qt::Key_Up) << none << Action(ChangeVolume {0.05});
        QTest::newRow("down arrow") << int(Qt::Key_Down) << none << Action(ChangeVolume {-0.05});
        QTest::newRow("shift up passes on")
            << int(Qt::Key_Up) << Qt::KeyboardModifiers(shift) << Action(PassOn {});
        QTest::newRow("F") << int(Qt::Key_F) << none << Action(ToggleFullScreen {});
        QTest::newRow("F11") << int(Qt::Key_F11) << none << Action(ToggleFullScreen {});
        QTest::newRow("command F passes on")
            << int(Qt::Key_F) << Qt::KeyboardModifiers(command) << Action(PassOn {});
        QTest::newRow("M") << int(Qt::Key_M) << none << Action(ToggleMute {});
        QTest::newRow("command M passes on")
            << int(Qt::Key_M) << Qt::KeyboardModifiers(command) << Action(PassOn {});
        QTest::newRow("escape in a window passes on")
            << int(Qt::Key_Escape) << none << Action(PassOn {});
        QTest::newRow("# cycles the audio tracks")
            << int(Qt::Key_NumberSign) << Qt::KeyboardModifiers(shift)
            << Action(CycleTrack {TrackKind::audio});
        QTest::newRow("# without shift")
            << int(Qt::Key_NumberSign) << none << Action(CycleTrack {TrackKind::audio});
        QTest::newRow("command # passes on")
            << int(Qt::Key_NumberSign) << Qt::KeyboardModifiers(command) << Action(PassOn {});
        QTest::newRow("J cycles the subtitles")
            << int(Qt::Key_J) << none << Action(CycleTrack {TrackKind::subtitle});
        QTest::newRow("shift J passes on")
            << int(Qt::Key_J) << Qt::KeyboardModifiers(shift) << Action(PassOn {});
        QTest::newRow("V shows or hides the subtitles")
            << int(Qt::Key_V) << none << Action(ToggleSubtitles {});
        QTest::newRow("page down: the next channel")
            << int(Qt::Key_PageDown) << none << Action(StepChannel {1});
        QTest::newRow("page up: the previous channel")
            << int(Qt::Key_PageUp) << none << Action(StepChannel {-1});
        QTest::newRow("shift page down passes on")
            << int(Qt::Key_PageDown) << Qt::KeyboardModifiers(shift) << Action(PassOn {});
        QTest::newRow("command V passes on")
            << int(Qt::Key_V) << Qt::KeyboardModifiers(command) << Action(PassOn {});
    }

    void rules()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(Action, expected);
        QVERIFY(action(key, modifiers, false, {}) == expected);
    }

    void repeatedKeysPassOn()
    {
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_Right, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_Space, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_F, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_M, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_J, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_V, {}, true, {})));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_NumberSign, {}, true, {})));
        // Held down, the volume keeps moving.
        QVERIFY(action(Qt::Key_Up, {}, true, {}) == Action(ChangeVolume {0.05}));
    }

    void aFocusedTextFieldKeepsItsKeys()
    {
        const Context typing {true, false, false};
        for (int key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_F, Qt::Key_M, Qt::Key_Up, Qt::Key_F11,
                        Qt::Key_J, Qt::Key_V, Qt::Key_NumberSign})
            QVERIFY(std::holds_alternative<PassOn>(action(key, {}, false, typing)));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_K, command, false, typing)));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_PageDown, {}, false, typing)));
    }

    void aFocusedListKeepsOnlyItsArrows()
    {
        const Context inList {false, true, false};
        for (int key : {Qt::Key_Up, Qt::Key_Down})
            QVERIFY(std::holds_alternative<PassOn>(action(key, {}, false, inList)));
        // Letters are the player's: the list searches nothing.
        QVERIFY(action(Qt::Key_F, {}, false, inList) == Action(ToggleFullScreen {}));
        QVERIFY(action(Qt::Key_F11, {}, false, inList) == Action(ToggleFullScreen {}));
        QVERIFY(action(Qt::Key_M, {}, false, inList) == Action(ToggleMute {}));
        QVERIFY(action(Qt::Key_J, {}, false, inList) == Action(CycleTrack {TrackKind::subtitle}));
        QVERIFY(action(Qt::Key_V, {}, false, inList) == Action(ToggleSubtitles {}));
        QVERIFY(action(Qt::Key_NumberSign, Qt::ShiftModifier, false, inList)
                == Action(CycleTrack {TrackKind::audio}));
        // The player's own keys still work there, and so do the channel keys.
        QVERIFY(action(Qt::Key_Space, {}, false, inList) == Action(TogglePlayback {}));
        QVERIFY(action(Qt::Key_PageDown, {}, false, inList) == Action(StepChannel {1}));
        QVERIFY(action(Qt::Key_Right, {}, false, inList) == Action(Skip {5}));
    }

    void escapeLeavesFullScreenOnly()
    {
        const Context fullScreen {false, false, true};
        QVERIFY(action(Qt::Key_Escape, {}, false, fullScreen) == Action(LeaveFullScreen {}));
        QVERIFY(std::holds_alternative<PassOn>(action(Qt::Key_Escape, {}, false, {})));
    }
};

QTEST_GUILESS_MAIN(TestKeyboardShortcuts)
#include "tst_keyboardshortcuts.moc"
