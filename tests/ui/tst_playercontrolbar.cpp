// The control bar under a real window: its controls in order, what each one does, the time
// texts, the position slider under a drag, volume, the record control's faces and the display
// mode menu.
#include "model/playermodel.h"
#include "recordingrecorder.h"
#include "scriptedmediaplayer.h"
#include "ui/controlbutton.h"
#include "ui/playercontrolbar.h"
#include "ui/recordcontrol.h"
#include "windowactivation.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QWheelEvent>

namespace {

const QUrl clip(QStringLiteral("file:///media/clip.mp4"));

QString minus(const QString &time)
{
    return QChar(0x2212) + time;
}

} // namespace

class TestPlayerControlBar : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerControlBar> m_bar;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    QList<QWidget *> controls()
    {
        QList<QWidget *> widgets;
        for (int i = 0; i < m_bar->layout()->count(); ++i)
            if (QWidget *widget = m_bar->layout()->itemAt(i)->widget())
                widgets.append(widget);
        return widgets;
    }
    ControlButton *button(const QString &help)
    {
        for (ControlButton *button : m_bar->findChildren<ControlButton *>())
            if (button->toolTip() == help)
                return button;
        return nullptr;
    }
    QStringList timeTexts()
    {
        const QList<QWidget *> all = controls();
        return {qobject_cast<QLabel *>(all.at(6))->text(),
                qobject_cast<QLabel *>(all.at(8))->text()};
    }
    // Where a slider's handle sits for a value.
    static QPoint pointFor(QSlider *slider, int value)
    {
        const double fraction
            = double(value - slider->minimum()) / (slider->maximum() - slider->minimum());
        return {int(6 + fraction * (slider->width() - 12)), slider->height() / 2};
    }

private Q_SLOTS:
    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_bar = std::make_unique<PlayerControlBar>(*m_model);
        m_bar->resize(760, PlayerControlBar::barHeight);
        m_bar->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_bar.get()));
    }

    void cleanup()
    {
        m_bar.reset();
        m_model.reset();
    }

    void theControlsComeInOrderWithTheirSymbolsAndHelp()
    {
        const QList<QWidget *> all = controls();
        QCOMPARE(all.size(), 15);
        const auto symbolAndHelp = [&](int i) {
            auto *button = qobject_cast<ControlButton *>(all.at(i));
            return button ? button->symbol() + QLatin1Char('|') + button->toolTip() : QString();
        };
        QCOMPARE(symbolAndHelp(0), "backward.fill|Skip back 10 seconds");
        QCOMPARE(symbolAndHelp(1), "play.fill|Play");
        QCOMPARE(symbolAndHelp(2), "stop.fill|Stop");
        QCOMPARE(symbolAndHelp(3), "forward.fill|Skip forward 10 seconds");
        QVERIFY(qobject_cast<QFrame *>(all.at(4)));
        QCOMPARE(all.at(4)->height(), 22);
        QCOMPARE(symbolAndHelp(5), "list.bullet|Show or hide sidebar");
        QVERIFY(qobject_cast<QLabel *>(all.at(6)));
        QCOMPARE(all.at(6)->width(), 44);
        QVERIFY(qobject_cast<QSlider *>(all.at(7)));
        QCOMPARE(all.at(8)->width(), 52);
        QCOMPARE(symbolAndHelp(9), "speaker.wave.2.fill|Mute or unmute");
        QCOMPARE(all.at(10), m_bar->volumeSlider());
        QCOMPARE(all.at(10)->width(), 78);
        QCOMPARE(all.at(11), m_bar->recordControl());
        // Shown only when an item has tracks to choose from.
        QCOMPARE(symbolAndHelp(12), "captions.bubble|Audio and subtitles");
        QVERIFY(all.at(12)->isHidden());
        QCOMPARE(symbolAndHelp(13), "rectangle|Video display mode");
        QCOMPARE(all.at(13)->width(), 31);
        QCOMPARE(symbolAndHelp(14), "arrow.up.left.and.arrow.down.right|Enter full screen");

        // Play is the prominent one.
        QCOMPARE(all.at(1)->size(), QSize(27, 19));
        QCOMPARE(all.at(0)->size(), QSize(23, 19));
        QCOMPARE(all.at(14)->size(), QSize(23, 19));
    }

    void theSidebarButtonIsSelectedWhileTheSidebarShows()
    {
        QSignalSpy toggles(m_bar.get(), &PlayerControlBar::sidebarToggleRequested);
        ControlButton *sidebar = button(QStringLiteral("Show or hide sidebar"));
        const QImage plain = sidebar->grab().toImage();
        QTest::mouseClick(sidebar, Qt::LeftButton);
        QCOMPARE(toggles.size(), 1);
        m_bar->setSidebarShown(true);
        QVERIFY(sidebar->isSelected());
        QVERIFY(sidebar->grab().toImage() != plain);
        QVERIFY(!button(QStringLiteral("Play"))->isSelected());
    }

    void playPauseFollowsTheModelAndTheButtonsDriveIt()
    {
        m_model->play(clip, std::nullopt, false);
        QVERIFY(m_model->isPlaying());
        QCOMPARE(controls().at(1)->toolTip(), "Pause");
        QCOMPARE(qobject_cast<ControlButton *>(controls().at(1))->symbol(), "pause.fill");
        QTest::mouseClick(controls().at(1), Qt::LeftButton);
        QVERIFY(!m_model->isPlaying());
        QCOMPARE(controls().at(1)->toolTip(), "Play");

        player().setPosition(50);
        QTRY_COMPARE(m_model->currentTime(), 50.0);
        QTest::mouseClick(button(QStringLiteral("Skip back 10 seconds")), Qt::LeftButton);
        QCOMPARE(player().seeks.constLast(), 40.0);
        QTest::mouseClick(button(QStringLiteral("Skip forward 10 seconds")), Qt::LeftButton);
        QCOMPARE(player().seeks.constLast(), 50.0);
        QTest::mouseClick(button(QStringLiteral("Stop")), Qt::LeftButton);
        QCOMPARE(player().items.constLast(), std::nullopt);
        QCOMPARE(m_model->title(), "No Media Selected");
    }

    void timesAndTheSliderFollowPlayback()
    {
        player().setDuration(3725 + 100);
        m_model->play(clip, std::nullopt, false);
        player().setPosition(3725);
        QTRY_COMPARE(timeTexts(), (QStringList {"62:05", minus(QStringLiteral("01:40"))}));
        QCOMPARE(m_bar->positionSlider()->maximum(), 3825 * PlayerControlBar::sliderScale);
        QCOMPARE(m_bar->positionSlider()->value(), 3725 * PlayerControlBar::sliderScale);
    }

    void withNoDurationTheSliderSpansOneSecond()
    {
        player().setDuration(std::nullopt);
        m_model->play(clip, std::nullopt, false);
        QTest::qWait(PlayerModel::timeObserverIntervalMs * 2);
        QCOMPARE(m_model->duration(), 0.0);
        QCOMPARE(m_bar->positionSlider()->minimum(), 0);
        QCOMPARE(m_bar->positionSlider()->maximum(), PlayerControlBar::sliderScale);
        QCOMPARE(timeTexts(), (QStringList {"00:00", minus(QStringLiteral("00:00"))}));
    }

    void aDragKeepsTheThumbUnderThePointerAndSeeksExactlyOnRelease()
    {
        m_model->play(clip, std::nullopt, false); // 100 s
        QSlider *slider = m_bar->positionSlider();
        QTRY_COMPARE(slider->maximum(), 100 * PlayerControlBar::sliderScale);
        const QPoint start = pointFor(slider, 20 * PlayerControlBar::sliderScale);
        const QPoint end = pointFor(slider, 70 * PlayerControlBar::sliderScale);
        QTest::mousePress(slider, Qt::LeftButton, {}, start);
        QVERIFY(m_bar->isSeeking());
        QTest::mouseMove(slider, end);
        const int dragged = slider->value();
        QVERIFY2(qAbs(dragged - 70 * PlayerControlBar::sliderScale) < 3000,
                 qPrintable(QString::number(dragged)));
        // Playback goes on underneath; its time updates leave the thumb where it is.
        player().setPosition(5);
        QTRY_COMPARE(m_model->currentTime(), 5.0);
        QTest::qWait(PlayerModel::timeObserverIntervalMs * 2);
        QCOMPARE(slider->value(), dragged);
        QCOMPARE(m_bar->seekValue(), double(dragged) / PlayerControlBar::sliderScale);
        const qsizetype seeksBefore = player().seeks.size();
        QTest::mouseRelease(slider, Qt::LeftButton, {}, end);
        QVERIFY(!m_bar->isSeeking());
        QCOMPARE(player().seeks.size(), seeksBefore + 1);
        QCOMPARE(player().seeks.constLast(), double(dragged) / PlayerControlBar::sliderScale);
    }

    void volumeAndMuteFollowTheModel()
    {
        QSlider *volume = m_bar->volumeSlider();
        QCOMPARE(volume->value(), PlayerControlBar::sliderScale);
        volume->setValue(300);
        QCOMPARE(m_model->volume(), 0.3);
        m_model->setVolume(0.8);
        QCOMPARE(volume->value(), 800);
        ControlButton *mute = button(QStringLiteral("Mute or unmute"));
        QTest::mouseClick(mute, Qt::LeftButton);
        QVERIFY(m_model->isMuted());
        QCOMPARE(mute->symbol(), "speaker.slash.fill");
        QTest::mouseClick(mute, Qt::LeftButton);
        QCOMPARE(mute->symbol(), "speaker.wave.2.fill");
    }

    void thePositionSliderKeepsItsRoomAtEveryWidth()
    {
        // In a window, as the bar always is: its parent gives it its width.
        QWidget window;
        window.resize(1000, 100);
        m_bar->setParent(&window);
        const auto giveBack = qScopeGuard([this] { m_bar->setParent(nullptr); });
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        m_model->play(clip, std::nullopt, false);
        for (bool tracks : {false, true}) {
            if (tracks) {
                MediaTrack subtitles;
                subtitles.kind = TrackKind::subtitle;
                subtitles.id = 1;
                player().setTracks({subtitles});
                QTRY_VERIFY(m_bar->tracksButton()->isVisible());
            }
            // 520: the narrowest window; 534: the narrowest beside the sidebar.
            for (int width : {520, 534, 560, 600, 640, 700, 760, 1000}) {
                m_bar->setGeometry(0, 0, width, PlayerControlBar::barHeight);
                QCoreApplication::processEvents();
                const QString where = QStringLiteral("%1 wide, tracks %2").arg(width).arg(tracks);
                QVERIFY2(
                    m_bar->positionSlider()->width() >= 120,
                    qPrintable(
                        where
                        + QStringLiteral(": slider %1").arg(m_bar->positionSlider()->width())));
                // Every control whole, inside the bar, none over another.
                QList<QRect> taken;
                for (QWidget *control : controls()) {
                    if (!control->isVisible())
                        continue;
                    const QRect place = control->geometry();
                    QVERIFY2(place.left() >= 0 && place.right() < width
                                 && place.width() >= control->minimumWidth(),
                             qPrintable(where
                                        + QStringLiteral(": %1 at %2, %3 wide")
                                              .arg(control->metaObject()->className())
                                              .arg(place.x())
                                              .arg(place.width())));
                    for (const QRect &other : taken)
                        QVERIFY2(!other.intersects(place), qPrintable(where));
                    taken.append(place);
                }
                // The volume slider folds only where it does not fit.
                if (width >= 760) {
                    QVERIFY2(!m_bar->isVolumeFolded(), qPrintable(where));
                    QCOMPARE(m_bar->volumeSlider()->parentWidget(), m_bar.get());
                    QCOMPARE(m_bar->volumeSlider()->width(), 78);
                }
            }
        }
    }

    void aFoldedVolumeSliderOpensFromTheMuteButton()
    {
        m_bar->resize(520, PlayerControlBar::barHeight);
        QCoreApplication::processEvents();
        QVERIFY(m_bar->isVolumeFolded());
        QVERIFY(!m_bar->volumeSlider()->isVisible());
        ControlButton *mute = button(QStringLiteral("Mute or unmute"));
        // A left click still mutes.
        QTest::mouseClick(mute, Qt::LeftButton);
        QVERIFY(m_model->isMuted());
        QVERIFY(!m_bar->volumePopup()->isVisible());
        QTest::mouseClick(mute, Qt::LeftButton);
        QVERIFY(!m_model->isMuted());
        // A right click opens the slider, which sets the volume as in the bar.
        QTest::mousePress(mute, Qt::RightButton);
        QTRY_VERIFY(m_bar->volumePopup()->isVisible());
        QVERIFY(m_bar->volumeSlider()->isVisible());
        QVERIFY(m_bar->volumePopup()->isAncestorOf(m_bar->volumeSlider()));
        m_bar->volumeSlider()->setValue(400);
        QCOMPARE(m_model->volume(), 0.4);
        m_bar->volumePopup()->hide();
        // The wheel over the button changes the volume and shows it.
        const QPoint centre = mute->rect().center();
        QWheelEvent wheel(centre, mute->mapToGlobal(centre), {}, {0, 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(mute, &wheel);
        QCOMPARE(m_model->volume(), 0.45);
        QTRY_VERIFY(m_bar->volumePopup()->isVisible());
        m_bar->volumePopup()->hide();
        // Wide again, the slider is back in the row.
        m_bar->resize(1000, PlayerControlBar::barHeight);
        QCoreApplication::processEvents();
        QVERIFY(!m_bar->isVolumeFolded());
        QTRY_VERIFY(m_bar->volumeSlider()->isVisible());
        QCOMPARE(controls().at(10), m_bar->volumeSlider());
    }

    void theRecordControlHasThreeFaces()
    {
        RecordControl *control = m_bar->recordControl();
        // Without a recorder it cannot be used.
        QVERIFY(!control->isEnabled());

        RecordingRecorder recorder;
        m_bar->setRecorder(&recorder);
        QCOMPARE(control->face(), RecordControl::Face::menu);
        QVERIFY(control->isEnabled());
        auto *menuFace = control->findChildren<ControlButton *>().at(0);
        QCOMPARE(menuFace->toolTip(), "Choose recording quality");
        QCOMPARE(menuFace->symbol(), "record.circle.fill");
        QCOMPARE(menuFace->width(), 29);
        const QList<QAction *> items = control->qualityMenu()->actions();
        QCOMPARE(items.size(), 2);
        QCOMPARE(items.at(0)->text(), "Normal Recording");
        QCOMPARE(items.at(0)->property("symbol"), "record.circle");
        QCOMPARE(items.at(1)->text(), "HD Recording (1080p)");
        QCOMPARE(items.at(1)->property("symbol"), "record.circle.fill");
        items.at(1)->trigger();
        QCOMPARE(recorder.starts, QList<PlayerRecordingQuality> {PlayerRecordingQuality::hd});

        recorder.setState(PlayerRecordingState::preparing);
        QCOMPARE(control->face(), RecordControl::Face::preparing);
        QVERIFY(!control->isEnabled());
        items.at(0)->trigger();
        QCOMPARE(recorder.starts.size(), 1);

        recorder.setState(PlayerRecordingState::recording);
        QCOMPARE(control->face(), RecordControl::Face::stop);
        QVERIFY(control->isEnabled());
        ControlButton *stop = nullptr;
        for (ControlButton *face : control->findChildren<ControlButton *>())
            if (face->isVisible())
                stop = face;
        QVERIFY(stop);
        QCOMPARE(stop->toolTip(), "Stop Recording");
        QVERIFY(stop->hasRecordingLook());
        QTest::mouseClick(stop, Qt::LeftButton);
        QCOMPARE(recorder.stops, 1);
        // The menu's items stop a running recording too.
        items.at(0)->trigger();
        QCOMPARE(recorder.stops, 2);
        QCOMPARE(recorder.starts.size(), 1);

        recorder.setState(PlayerRecordingState::stopping);
        QCOMPARE(control->face(), RecordControl::Face::stop);
        QVERIFY(!control->isEnabled());

        recorder.setState(PlayerRecordingState::idle);
        QCOMPARE(control->face(), RecordControl::Face::menu);
        QVERIFY(control->isEnabled());
        items.at(0)->trigger();
        QCOMPARE(recorder.starts.constLast(), PlayerRecordingQuality::normal);
    }

    void theDisplayModeMenuMarksTheCurrentMode()
    {
        QMenu *menu = m_bar->displayModeMenu();
        const auto titlesAndSymbols = [menu] {
            QStringList result;
            for (QAction *action : menu->actions())
                result.append(action->text() + QLatin1Char('|')
                              + action->property("symbol").toString());
            return result;
        };
        QCOMPARE(
            titlesAndSymbols(),
            (QStringList {"Normal|checkmark.circle.fill", "Portrait Fill|rectangle.portrait.fill",
                          QString::fromUtf8("Portrait Rotate 90°|rotate.right"),
                          "Manual Reframe|hand.draw", "Smart Reframe|viewfinder"}));
        QSignalSpy chosen(m_bar.get(), &PlayerControlBar::displayModeChosen);
        menu->actions().at(4)->trigger();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.at(0).at(0).value<PortraitDisplayMode>(), PortraitDisplayMode::smart);
        m_bar->setPortraitMode(PortraitDisplayMode::smart);
        QCOMPARE(titlesAndSymbols().at(0), "Normal|rectangle");
        QCOMPARE(titlesAndSymbols().at(4), "Smart Reframe|checkmark.circle.fill");
        QCOMPARE(button(QStringLiteral("Video display mode"))->symbol(), "viewfinder");
    }

    void theFullScreenButtonTogglesTheActiveWindow()
    {
        ControlButton *fullScreen = button(QStringLiteral("Enter full screen"));
        QVERIFY(WindowActivation::deactivateAll());
        QTest::mouseClick(fullScreen, Qt::LeftButton);
        QVERIFY(!m_bar->isFullScreen());
        QVERIFY(WindowActivation::activate(m_bar.get()));
        QTest::mouseClick(fullScreen, Qt::LeftButton);
        QTRY_VERIFY(m_bar->isFullScreen());
        QTest::mouseClick(fullScreen, Qt::LeftButton);
        QTRY_VERIFY(!m_bar->isFullScreen());
    }
};

QTEST_MAIN(TestPlayerControlBar)
#include "tst_playercontrolbar.moc"
