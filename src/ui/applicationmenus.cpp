#include "applicationmenus.h"

#include "model/playermodel.h"
#include "openguidedialog.h"
#include "trackmenus.h"

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

void install(QMenuBar &menuBar, PlayerModel &model)
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
    for (const auto &[title, step] : {std::pair(QStringLiteral("Next Channel"), 1),
                                      std::pair(QStringLiteral("Previous Channel"), -1)}) {
        QAction *zap = playback->addAction(title);
        QObject::connect(zap, &QAction::triggered, &model,
                         [&model, step] { Q_EMIT model.channelStepRequested(step); });
        const auto updateZap = [zap, &model] {
            zap->setEnabled(!model.playlist().isEmpty());
        };
        QObject::connect(&model, &PlayerModel::playlistChanged, zap, updateZap);
        updateZap();
    }
    playback->addSeparator();
    TrackMenus::follow(playback->addMenu(TrackMenus::audioTitle.toString()), model,
                       TrackKind::audio);
    TrackMenus::follow(playback->addMenu(TrackMenus::subtitlesTitle.toString()), model,
                       TrackKind::subtitle);
}

} // namespace ApplicationMenus
