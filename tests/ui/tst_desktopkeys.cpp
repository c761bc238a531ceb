// The keys and the wheel desktop users reach for, pressed for real under a window manager
// (openbox on the test display) through xdotool: full screen, mute, volume, and the keyboard in
// the channel list after a click. Screenshots go to build/screenshots.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "surface/playersurface.h"
#include "testdesktop.h"
#include "ui/channellist.h"
#include "ui/contentview.h"
#include "ui/controlbutton.h"
#include "ui/filtermenubutton.h"
#include "ui/nametoggle.h"
#include "ui/networkpanel.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QTest>
#include <QToolButton>

namespace {

using TestDesktop::xdotool;

QByteArray playlistText(int count)
{
    QByteArray text = "#EXTM3U\n";
    for (int i = 0; i < count; ++i)
        text += "#EXTINF:-1 group-title=\"News\",Channel " + QByteArray::number(i)
            + "\nhttp://127.0.0.1:9/" + QByteArray::number(i) + ".m3u8\n";
    return text;
}

} // namespace

class TestDesktopKeys : public QObject
{
    Q_OBJECT

private:
    TestDesktop::WindowManager m_windowManager;
    LocalHttpServer m_server;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ContentView *content() { return m_window->contentView(); }

    // A key pressed on the keyboard, delivered by the X server to the focused window.
    bool press(const QString &key)
    {
        const bool pressed = xdotool({QStringLiteral("key"), key});
        QTest::qWait(150);
        return pressed;
    }

    void saveScreenshot(const QString &name) { TestDesktop::saveScreenshot(*m_window, name); }

    // The sidebar, once its address field has taken the focus as it does when it opens.
    void showSidebar()
    {
        content()->setShowSidebar(true);
        QTRY_VERIFY(content()->networkPanel()->isAddressFieldFocused());
    }

    // A click where the pointer is moved to, delivered by the X server.
    bool clickAt(QWidget *widget, QPoint point)
    {
        const QPoint at = widget->mapToGlobal(point);
        if (!xdotool(
                {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y())}))
            return false;
        QTest::qWait(100);
        const bool clicked = xdotool({QStringLiteral("click"), QStringLiteral("1")});
        QTest::qWait(150);
        return clicked;
    }

    // The address field lets the keyboard go: letters are the player's, and nothing is typed.
    void checkKeysAreThePlayers()
    {
        NetworkPanel *panel = content()->networkPanel();
        QTRY_VERIFY(!panel->isAddressFieldFocused());
        const bool muted = m_model->isMuted();
        QVERIFY(press(QStringLiteral("j")));
        QVERIFY(press(QStringLiteral("m")));
        QTRY_COMPARE(m_model->isMuted(), !muted);
        QVERIFY(panel->address().isEmpty());
        QVERIFY(!panel->isAutomaticOpenPending());
    }

    bool activate()
    {
        m_window->activateWindow();
        m_window->raise();
        return QTest::qWaitForWindowActive(m_window.get());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_windowManager.start(), "openbox or xdotool is missing: run ./lumo setup");
        m_server.route(QStringLiteral("/list.m3u"), HttpResponse::text(playlistText(20)));
        QVERIFY(m_server.listen());
    }

    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->resize(900, 600);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTest::qWait(300); // framed by the window manager
        QVERIFY(activate());
        content()->surface()->setFocus();
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
    }

    void fAndF11ToggleFullScreenAndEscapeLeavesIt()
    {
        QVERIFY(press(QStringLiteral("f")));
        QTRY_VERIFY(m_window->isFullScreen());
        saveScreenshot(QStringLiteral("keys-full-screen-by-f"));
        QVERIFY(press(QStringLiteral("Escape")));
        QTRY_VERIFY(!m_window->isFullScreen());
        QVERIFY(press(QStringLiteral("F11")));
        QTRY_VERIFY(m_window->isFullScreen());
        QVERIFY(press(QStringLiteral("F11")));
        QTRY_VERIFY(!m_window->isFullScreen());
        // Escape in a window is not the player's.
        QVERIFY(press(QStringLiteral("Escape")));
        QTest::qWait(300);
        QVERIFY(!m_window->isFullScreen());
        saveScreenshot(QStringLiteral("keys-window-after-escape"));
    }

    void mMutesAndTheArrowsAndWheelSetTheVolume()
    {
        QCOMPARE(m_model->volume(), 1.0);
        QVERIFY(press(QStringLiteral("m")));
        QTRY_VERIFY(m_model->isMuted());
        QVERIFY(press(QStringLiteral("m")));
        QTRY_VERIFY(!m_model->isMuted());
        QVERIFY(press(QStringLiteral("Down")));
        QVERIFY(press(QStringLiteral("Down")));
        QTRY_COMPARE(m_model->volume(), 0.9);
        QVERIFY(press(QStringLiteral("Up")));
        QTRY_COMPARE(m_model->volume(), 0.95);
        // The wheel over the picture: a notch down, then two up, held at full volume.
        const QPoint picture
            = content()->surface()->mapToGlobal(content()->surface()->rect().center());
        QVERIFY(xdotool({QStringLiteral("mousemove"), QString::number(picture.x()),
                         QString::number(picture.y())}));
        QTest::qWait(100);
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("5")}));
        QTRY_COMPARE(m_model->volume(), 0.9);
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("3"),
                         QStringLiteral("4")}));
        QTRY_COMPARE(m_model->volume(), 1.0);
        QVERIFY(!m_window->isFullScreen());
    }

    void aTextFieldKeepsTheLettersItTypes()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 20, 10000);
        showSidebar();
        QLineEdit *search = content()->channelList()->searchField();
        QTRY_VERIFY(search->isVisible());
        search->setFocus();
        QTRY_VERIFY(search->hasFocus());
        QVERIFY(press(QStringLiteral("f")));
        QVERIFY(press(QStringLiteral("m")));
        QVERIFY(press(QStringLiteral("space")));
        QTRY_COMPARE(search->text(), QStringLiteral("fm "));
        QVERIFY(!m_window->isFullScreen());
        QVERIFY(!m_model->isMuted());
        QCOMPARE(m_model->volume(), 1.0);
        saveScreenshot(QStringLiteral("keys-typing-in-the-search"));
    }

    void aClickedRowGivesTheListTheKeyboard()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 20, 10000);
        showSidebar();
        ChannelList *channels = content()->channelList();
        QListView *list = channels->listView();
        QTRY_VERIFY(list->isVisible());
        channels->searchField()->setFocus();
        QTRY_VERIFY(channels->searchField()->hasFocus());
        QTest::qWait(300);
        const QRect row = list->visualRect(list->model()->index(1, 0));
        const QPoint at = list->viewport()->mapToGlobal(row.center());
        QVERIFY(xdotool(
            {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y())}));
        QTest::qWait(100);
        QVERIFY(xdotool({QStringLiteral("click"), QStringLiteral("1")}));
        QTRY_COMPARE(m_model->title(), QStringLiteral("Channel 1"));
        QTRY_VERIFY(list->hasFocus());
        QVERIFY(m_model->isPlaying());
        // Space pauses instead of typing.
        QVERIFY(press(QStringLiteral("space")));
        QTRY_VERIFY(!m_model->isPlaying());
        QVERIFY(channels->searchField()->text().isEmpty());
        // The arrows move through the rows, Return plays the row reached.
        QVERIFY(press(QStringLiteral("Down")));
        QVERIFY(press(QStringLiteral("Down")));
        QTRY_COMPARE(list->currentIndex().row(), 3);
        QCOMPARE(m_model->volume(), 1.0);
        saveScreenshot(QStringLiteral("keys-list-current-row"));
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_COMPARE(m_model->title(), QStringLiteral("Channel 3"));
    }
    void playingFromElsewhereLetsTheAddressFieldGo()
    {
        NetworkPanel *panel = content()->networkPanel();
        showSidebar();
        // The open panel, from its keys.
        m_model->setFileChooser([](const OpenPanelRequest &) {
            return std::optional<QString>(QStringLiteral("/media/clip.mp4"));
        });
        QVERIFY(press(QStringLiteral("ctrl+o")));
        QTRY_COMPARE(m_model->title(), QStringLiteral("clip.mp4"));
        checkKeysAreThePlayers();
        saveScreenshot(QStringLiteral("keys-after-the-open-panel"));
        // A click in the field gives it the keyboard back.
        QVERIFY(clickAt(panel->addressField(), panel->addressField()->rect().center()));
        QTRY_VERIFY(panel->isAddressFieldFocused());
        // A file handed over by another launch, or dropped.
        content()->openURL(QUrl::fromLocalFile(QStringLiteral("/media/other.mp4")));
        checkKeysAreThePlayers();
        // An address from the command line shows the sidebar and plays: the field does not
        // take the keyboard when the sidebar is in.
        content()->setShowSidebar(false);
        QTest::qWait(ContentView::sidebarAnimationMs + 100);
        content()->openAddress(QStringLiteral("http://127.0.0.1:9/live/news.m3u8"));
        QTRY_COMPARE(m_model->title(), QStringLiteral("news.m3u8"));
        QTest::qWait(ContentView::addressFocusDelayMs + 200);
        panel->setAddress(QString());
        checkKeysAreThePlayers();
    }

    void aClickOnTheControlBarLetsTheAddressFieldGo()
    {
        showSidebar();
        PlayerControlBar *bar = content()->controlBar();
        // On the bar's elapsed time, where no button is.
        QVERIFY(clickAt(bar, QPoint(bar->positionSlider()->x() - 20, bar->height() / 2)));
        checkKeysAreThePlayers();
        // And on a button.
        QVERIFY(clickAt(content()->networkPanel()->addressField(),
                        content()->networkPanel()->addressField()->rect().center()));
        QTRY_VERIFY(content()->networkPanel()->isAddressFieldFocused());
        QVERIFY(clickAt(bar, QPoint(12, bar->height() / 2)));
        checkKeysAreThePlayers();
    }

    void controlLGivesTheAddressFieldTheKeyboard()
    {
        NetworkPanel *panel = content()->networkPanel();
        // Hidden: the sidebar shows and the field takes the keyboard once it is in.
        QVERIFY(press(QStringLiteral("ctrl+l")));
        QTRY_VERIFY(content()->showsSidebar());
        QTRY_VERIFY(panel->isAddressFieldFocused());
        // Shown, with the keyboard elsewhere: at once.
        content()->surface()->setFocus();
        QTRY_VERIFY(!panel->isAddressFieldFocused());
        QVERIFY(press(QStringLiteral("ctrl+l")));
        QTRY_VERIFY(panel->isAddressFieldFocused());
        QVERIFY(press(QStringLiteral("a")));
        QTRY_COMPARE(panel->address(), QStringLiteral("a"));
    }

    void lettersAreThePlayersInTheClickedList()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 20, 10000);
        showSidebar();
        ChannelList *channels = content()->channelList();
        QListView *list = channels->listView();
        QTRY_VERIFY(list->isVisible());
        QTest::qWait(300);
        QVERIFY(clickAt(list->viewport(), list->visualRect(list->model()->index(1, 0)).center()));
        QTRY_COMPARE(m_model->title(), QStringLiteral("Channel 1"));
        QTRY_VERIFY(list->hasFocus());
        // M mutes and F fills the screen; no row is searched for by its letters.
        QVERIFY(press(QStringLiteral("m")));
        QTRY_VERIFY(m_model->isMuted());
        QVERIFY(press(QStringLiteral("f")));
        QTRY_VERIFY(m_window->isFullScreen());
        QVERIFY(press(QStringLiteral("f")));
        QTRY_VERIFY(!m_window->isFullScreen());
        QTest::qWait(500);
        list->setFocus();
        QTRY_VERIFY(list->hasFocus());
        // Twice the first letter of every row would step to the next one.
        QVERIFY(press(QStringLiteral("c")));
        QVERIFY(press(QStringLiteral("c")));
        QTest::qWait(200);
        QCOMPARE(list->currentIndex().row(), 1);
        // The arrows still move in the list and Return plays the row reached.
        QVERIFY(press(QStringLiteral("Down")));
        QTRY_COMPARE(list->currentIndex().row(), 2);
        QCOMPARE(m_model->volume(), 1.0);
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_COMPARE(m_model->title(), QStringLiteral("Channel 2"));
        saveScreenshot(QStringLiteral("keys-letters-in-the-list"));
    }
    void tabReachesEveryControlInVisualOrder()
    {
        m_model->openRemote(m_server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 20, 10000);
        showSidebar();
        NetworkPanel *panel = content()->networkPanel();
        ChannelList *channels = content()->channelList();
        PlayerControlBar *bar = content()->controlBar();
        QList<QWidget *> expected {panel->addressField(),      panel->clearButton(),
                                   panel->importButton(),      panel->playButton(),
                                   channels->searchField(),    channels->countryButton(),
                                   channels->categoryButton(), channels->listView()};
        // The picture's invitation to open media, while nothing plays.
        expected.append(
            content()->surface()->findChild<QPushButton *>(QStringLiteral("emptyState")));
        for (QWidget *control : bar->focusableControls())
            if (control->isVisible())
                expected.append(control);
        expected.append(panel->nameToggle());
        expected.append(panel->addressField());
        const auto name = [](QWidget *widget) {
            return widget ? widget->metaObject()->className() + QStringLiteral(" \"")
                    + widget->accessibleName() + u'"'
                          : QStringLiteral("nothing");
        };
        for (qsizetype i = 1; i < expected.size(); ++i) {
            QVERIFY(press(QStringLiteral("Tab")));
            QTRY_VERIFY2(
                QApplication::focusWidget() == expected.at(i),
                qPrintable(QStringLiteral("step %1: %2 instead of %3")
                               .arg(i)
                               .arg(name(QApplication::focusWidget()), name(expected.at(i)))));
            if (expected.at(i) == bar->focusableControls().constFirst())
                saveScreenshot(QStringLiteral("keys-tab-focus-ring"));
        }
        // And back.
        for (qsizetype i = expected.size() - 2; i >= 0; --i) {
            QVERIFY(press(QStringLiteral("shift+Tab")));
            QTRY_VERIFY2(
                QApplication::focusWidget() == expected.at(i),
                qPrintable(QStringLiteral("back at %1: %2 instead of %3")
                               .arg(i)
                               .arg(name(QApplication::focusWidget()), name(expected.at(i)))));
        }
        // Every control has a name for assistive tools.
        for (QWidget *control : expected)
            QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(name(control)));
    }

    void returnPressesTheFocusedControlAndTheArrowsMoveAFocusedSlider()
    {
        PlayerControlBar *bar = content()->controlBar();
        ControlButton *sidebar = nullptr;
        ControlButton *mode = nullptr;
        for (ControlButton *button : bar->findChildren<ControlButton *>()) {
            if (button->toolTip() == QStringLiteral("Show or hide sidebar"))
                sidebar = button;
            if (button->toolTip() == QStringLiteral("Video display mode"))
                mode = button;
        }
        QVERIFY(sidebar && mode);
        // A ring shows where the keyboard is.
        const QImage unfocused = sidebar->grab().toImage();
        sidebar->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(sidebar->hasFocus());
        QTRY_VERIFY(sidebar->grab().toImage() != unfocused);
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_VERIFY(content()->showsSidebar());
        QVERIFY(sidebar->hasFocus());
        // Space still plays and pauses, whatever has the focus.
        m_model->play(QUrl(QStringLiteral("file:///media/clip.mp4")), std::nullopt, false);
        QVERIFY(m_model->isPlaying());
        sidebar->setFocus(Qt::TabFocusReason);
        QVERIFY(press(QStringLiteral("space")));
        QTRY_VERIFY(!m_model->isPlaying());
        QVERIFY(content()->showsSidebar());
        // A menu button opens its menu.
        mode->setFocus(Qt::TabFocusReason);
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_VERIFY(bar->displayModeMenu()->isVisible());
        saveScreenshot(QStringLiteral("keys-menu-opened-by-return"));
        QVERIFY(press(QStringLiteral("Escape")));
        QTRY_VERIFY(!bar->displayModeMenu()->isVisible());
        // A focused slider takes the arrows; elsewhere they skip.
        m_model->setVolume(0.5);
        bar->volumeSlider()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(bar->volumeSlider()->hasFocus());
        QVERIFY(press(QStringLiteral("Right")));
        QTRY_COMPARE(m_model->volume(), 0.55);
        QVERIFY(press(QStringLiteral("Left")));
        QVERIFY(press(QStringLiteral("Left")));
        QTRY_COMPARE(m_model->volume(), 0.45);
    }
    void aLongCountryMenuIsOneColumnThatTypingSearches()
    {
        // A channel for every country there is.
        QByteArray text = "#EXTM3U\n";
        int count = 0;
        for (int territory = 1; territory <= int(QLocale::LastTerritory); ++territory) {
            const QString code = QLocale::territoryToCode(QLocale::Territory(territory));
            if (code.size() != 2)
                continue;
            text += "#EXTINF:-1 tvg-country=\"" + code.toLatin1() + "\",Channel "
                + QByteArray::number(count++) + "\nhttp://127.0.0.1:9/c.m3u8\n";
        }
        QVERIFY(count > 200);
        m_server.route(QStringLiteral("/countries.m3u"), HttpResponse::text(text));
        m_model->openRemote(m_server.url(QStringLiteral("/countries.m3u")).toString(),
                            std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), count, 10000);
        showSidebar();
        ChannelList *channels = content()->channelList();
        QMenu *menu = channels->countryButton()->menu();
        channels->countryButton()->setFocus(Qt::TabFocusReason);
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_VERIFY(menu->isVisible());
        QTest::qWait(300);
        // One column, no taller than the screen.
        const QRect available = m_window->screen()->availableGeometry();
        QVERIFY2(menu->height() <= available.height(),
                 qPrintable(QStringLiteral("%1 high").arg(menu->height())));
        QVERIFY(available.contains(menu->geometry()));
        QSet<int> columns;
        for (QAction *action : menu->actions())
            if (!action->isSeparator())
                columns.insert(menu->actionGeometry(action).x());
        QCOMPARE(columns.size(), 1);
        saveScreenshot(QStringLiteral("keys-country-menu"));
        TestDesktop::saveScreenshot(*menu, QStringLiteral("keys-country-menu-open"));
        // Letters are the menu's: "cz" goes to Czechia, F fills nothing.
        QVERIFY(press(QStringLiteral("c")));
        QVERIFY(press(QStringLiteral("z")));
        QTRY_VERIFY(menu->activeAction());
        QCOMPARE(menu->activeAction()->text(), QStringLiteral("Czechia"));
        QVERIFY(!m_window->isFullScreen());
        QVERIFY(press(QStringLiteral("Return")));
        QTRY_VERIFY(!menu->isVisible());
        QCOMPARE(channels->countryButton()->text(), QStringLiteral("Czechia"));
        // Côte d'Ivoire is among the Cs, before Czechia.
        QStringList names;
        for (QAction *action : menu->actions())
            names.append(action->text());
        QVERIFY(names.indexOf(QString::fromUtf16(u"C\u00f4te d\u2019Ivoire"))
                < names.indexOf(QStringLiteral("Czechia")));
        QVERIFY(names.indexOf(QStringLiteral("Colombia"))
                < names.indexOf(QString::fromUtf16(u"C\u00f4te d\u2019Ivoire")));
    }
};

QTEST_MAIN(TestDesktopKeys)
#include "tst_desktopkeys.moc"
