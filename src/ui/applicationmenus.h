#pragma once
// The menu bar: "Open Media…" in the File menu and the Playback menu, whose titles follow the
// model. The skip keys and space are the model's own shortcuts, not menu shortcuts.
class PlayerModel;
class QMenuBar;

namespace ApplicationMenus {

void install(QMenuBar &menuBar, PlayerModel &model);

} // namespace ApplicationMenus
