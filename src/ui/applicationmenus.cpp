#include "applicationmenus.h"

#include "aboutbox.h"
#include "contentview.h"
#include "model/playermodel.h"
#include "openguidedialog.h"
#include "recording/playerrecorder.h"
#include "surface/fullscreentoggle.h"
#include "trackmenus.h"

#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>

namespace ApplicationMenus {

namespace {

void addSkip(QMenu *menu, PlayerModel &model, const QString &title, double seconds)
{
    QObject::connect(menu->addAction(title), &QAction::triggered, &model,
                     [&model, seconds] { model.skip(seconds); });
}

} // namespace

// The key shown beside an item whose key the player handles itself (so that a text field
// keeps it): a hint, not a shortcut.
QString withKeyHint(const QString &title, const QString &key)
{
    return title + u'\t' + key;
}

// An item whose shortcut also works while the menu bar is hidden (full screen).
QAction *addWithShortcut(QMenu *menu, const QString &title, const QKeySequence &keys)
{
    QAction *action = menu->addAction(title);
    action->setShortcut(keys);
    menu->parentWidget()->window()->addAction(action);
    return action;
}

void addRecording(QMenu *playback, ContentView &content)
{
    QAction *record = addWithShortcut(playback, QString(), QKeySequence(Qt::CTRL | Qt::Key_R));
    const auto update = [record, &content] {
        PlayerRecorder *recorder = content.recorder();
        const PlayerRecordingState state
            = recorder ? recorder->state() : PlayerRecordingState::idle;
        record->setText(recorder && recorder->isRecording() ? QStringLiteral("Stop Recording")
                                                            : QStringLiteral("Start Recording"));
        record->setEnabled(recorder && state != PlayerRecordingState::preparing
                           && state != PlayerRecordingState::stopping);
    };
    // Normal quality from here; HD from the control bar's menu.
    QObject::connect(record, &QAction::triggered, &content, [&content] {
        PlayerRecorder *recorder = content.recorder();
        if (!recorder)
            return;
        if (recorder->isRecording())
            recorder->stopRecording();
        else if (recorder->state() == PlayerRecordingState::idle)
            recorder->startRecording(PlayerRecordingQuality::normal);
    });
    auto following = std::make_shared<QMetaObject::Connection>();
    const auto follow = [record, &content, update, following] {
        QObject::disconnect(*following);
        if (PlayerRecorder *recorder = content.recorder())
            *following = QObject::connect(recorder, &PlayerRecorder::stateChanged, record, update);
        update();
    };
    QObject::connect(&content, &ContentView::recorderChanged, record, follow);
    follow();
}

void addView(QMenuBar &menuBar, ContentView &content)
{
    QMenu *view = menuBar.addMenu(QStringLiteral("View"));
    QAction *sidebar
        = addWithShortcut(view, QString(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L));
    QObject::connect(sidebar, &QAction::triggered, &content,
                     [&content] { content.setShowSidebar(!content.showsSidebar()); });
    const auto updateSidebar = [sidebar, &content] {
        sidebar->setText(content.showsSidebar() ? QStringLiteral("Hide Sidebar")
                                                : QStringLiteral("Show Sidebar"));
    };
    QObject::connect(&content, &ContentView::sidebarShownChanged, sidebar, updateSidebar);
    updateSidebar();
    view->addSeparator();
    auto *modes = new QActionGroup(view);
    int number = 1;
    for (PortraitDisplayMode mode : PortraitDisplayModes::allCases) {
        QAction *item = addWithShortcut(view, PortraitDisplayModes::title(mode),
                                        QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + number++)));
        item->setCheckable(true);
        item->setChecked(mode == content.portraitMode());
        modes->addAction(item);
        QObject::connect(item, &QAction::triggered, &content,
                         [&content, mode] { content.setPortraitMode(mode); });
        QObject::connect(&content, &ContentView::portraitModeChanged, item,
                         [item, mode](PortraitDisplayMode now) { item->setChecked(now == mode); });
    }
    view->addSeparator();
    QAction *fullScreen = view->addAction(QString());
    QObject::connect(fullScreen, &QAction::triggered, &content,
                     [&content] { toggleFullScreen(content.window()); });
    const auto updateFullScreen = [fullScreen, &content] {
        fullScreen->setText(withKeyHint(content.isFullScreen()
                                            ? QStringLiteral("Exit Full Screen")
                                            : QStringLiteral("Enter Full Screen"),
                                        QStringLiteral("F")));
    };
    QObject::connect(&content, &ContentView::fullScreenChanged, fullScreen, updateFullScreen);
    updateFullScreen();
}

void install(QMenuBar &menuBar, PlayerModel &model, ContentView &content)
{
    QMenu *file = menuBar.addMenu(QStringLiteral("&File"));
    QAction *open = file->addAction(QStringLiteral("Open Media…"));
    open->setShortcut(QKeySequence::Open);
    QObject::connect(open, &QAction::triggered, &model, [&model] { model.openFile(); });
    QAction *guide = file->addAction(QStringLiteral("Open Guide…"));
    QObject::connect(guide, &QAction::triggered, &model, [&model, &menuBar] {
        auto *dialog = new OpenGuideDialog(model, menuBar.window());
        dialog->open();
    });
    file->addSeparator();
    QAction *quit = file->addAction(QStringLiteral("Quit"));
    quit->setShortcut(QKeySequence::Quit);
    QObject::connect(quit, &QAction::triggered, qApp, &QApplication::closeAllWindows);

    QMenu *playback = menuBar.addMenu(QStringLiteral("Playback"));
    QAction *toggle = playback->addAction(QString());
    QObject::connect(toggle, &QAction::triggered, &model, [&model] { model.togglePlayback(); });
    const auto updateToggle = [toggle, &model] {
        toggle->setText(model.isPlaying() ? QStringLiteral("Pause") : QStringLiteral("Play"));
    };
    QObject::connect(&model, &PlayerModel::isPlayingChanged, toggle, updateToggle);
    updateToggle();
    QObject::connect(playback->addAction(QStringLiteral("Stop")), &QAction::triggered, &model,
                     [&model] { model.stop(); });
    playback->addSeparator();
    addSkip(playback, model, QStringLiteral("Back 5 Seconds"), -5);
    addSkip(playback, model, QStringLiteral("Forward 5 Seconds"), 5);
    addSkip(playback, model, QStringLiteral("Back 20 Seconds"), -20);
    addSkip(playback, model, QStringLiteral("Forward 20 Seconds"), 20);
    addSkip(playback, model, QStringLiteral("Back 60 Seconds"), -60);
    addSkip(playback, model, QStringLiteral("Forward 60 Seconds"), 60);
    QAction *mute = playback->addAction(QString());
    mute->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
    QObject::connect(mute, &QAction::triggered, &model, [&model] { model.toggleMute(); });
    const auto updateMute = [mute, &model] {
        mute->setText(model.isMuted() ? QStringLiteral("Unmute") : QStringLiteral("Mute"));
    };
    QObject::connect(&model, &PlayerModel::isMutedChanged, mute, updateMute);
    updateMute();
    playback->addSeparator();
    for (const auto &[title, key, step] :
         {std::tuple(QStringLiteral("Next Channel"), QStringLiteral("Page Down"), 1),
          std::tuple(QStringLiteral("Previous Channel"), QStringLiteral("Page Up"), -1)}) {
        // Page Down and Page Up are the player's own keys, held down to zap.
        QAction *zap = playback->addAction(withKeyHint(title, key));
        QObject::connect(zap, &QAction::triggered, &model,
                         [&model, step] { Q_EMIT model.channelStepRequested(step); });
        const auto updateZap = [zap, &model] {
            zap->setEnabled(!model.playlist().isEmpty());
        };
        QObject::connect(&model, &PlayerModel::playlistChanged, zap, updateZap);
        updateZap();
    }
    QAction *live = playback->addAction(QStringLiteral("Back to Live"));
    live->setObjectName(QStringLiteral("backToLive"));
    QObject::connect(live, &QAction::triggered, &model, [&model] { model.backToLive(); });
    const auto updateLive = [live, &model] {
        live->setEnabled(model.isPlayingArchive());
    };
    QObject::connect(&model, &PlayerModel::archiveChanged, live, updateLive);
    updateLive();
    addRecording(playback, content);
    playback->addSeparator();
    TrackMenus::follow(playback->addMenu(TrackMenus::audioTitle.toString()), model,
                       TrackKind::audio);
    TrackMenus::follow(playback->addMenu(TrackMenus::subtitlesTitle.toString()), model,
                       TrackKind::subtitle);

    addView(menuBar, content);

    QMenu *help = menuBar.addMenu(QStringLiteral("Help"));
    QObject::connect(help->addAction(QStringLiteral("About LumoMediaPlayerPro")),
                     &QAction::triggered, &content,
                     [&content] { AboutBox::show(content.window()); });
}

} // namespace ApplicationMenus
