#include "trackmenus.h"

#include "sources/displaytext.h"

#include "model/playermodel.h"
#include "model/trackchoice.h"
#include "model/tracknames.h"

#include <QActionGroup>
#include <QMenu>

#include <algorithm>

namespace TrackMenus {

namespace {

void fill(QMenu *menu, PlayerModel &model, TrackKind kind)
{
    menu->clear();
    const MediaTracks tracks = TrackChoice::ofKind(model.tracks(), kind);
    // One group for the menu's life; clear() takes its actions out of it.
    auto *group = menu->findChild<QActionGroup *>(QString(), Qt::FindDirectChildrenOnly);
    if (!group)
        group = new QActionGroup(menu);
    const auto addChoice = [&](const QString &text, std::optional<qint64> id, bool selected) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(selected);
        group->addAction(action);
        QObject::connect(action, &QAction::triggered, &model,
                         [&model, kind, id] { model.selectTrack(kind, id); });
    };
    const bool subtitles = kind == TrackKind::subtitle;
    if (subtitles && !tracks.isEmpty()) {
        const bool anySelected
            = std::any_of(tracks.cbegin(), tracks.cend(),
                          [](const MediaTrack &track) { return track.isSelected; });
        addChoice(subtitlesOff.toString(), std::nullopt, !anySelected);
    }
    for (const MediaTrack &track : tracks)
        addChoice(DisplayText::forMenu(TrackNames::label(track)), track.id, track.isSelected);
    if (subtitles) {
        if (!tracks.isEmpty())
            menu->addSeparator();
        QAction *load = menu->addAction(loadSubtitles.toString());
        load->setEnabled(model.hasVideoItem());
        QObject::connect(load, &QAction::triggered, &model, [&model] { model.loadSubtitleFile(); });
    }
    menu->menuAction()->setEnabled(!tracks.isEmpty() || (subtitles && model.hasVideoItem()));
}

} // namespace

void follow(QMenu *menu, PlayerModel &model, TrackKind kind)
{
    const auto refill = [menu, &model, kind] {
        fill(menu, model, kind);
    };
    QObject::connect(&model, &PlayerModel::tracksChanged, menu, refill);
    QObject::connect(&model.player(), &MediaPlayer::hasItemChanged, menu, refill);
    QObject::connect(&model.player(), &MediaPlayer::soundOnlyChanged, menu, refill);
    refill();
}

bool worthAButton(const MediaTracks &tracks)
{
    return TrackChoice::ofKind(tracks, TrackKind::audio).size() > 1
        || !TrackChoice::ofKind(tracks, TrackKind::subtitle).isEmpty();
}

} // namespace TrackMenus
