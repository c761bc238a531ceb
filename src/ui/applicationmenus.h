#pragma once
// The menu bar: File, Playback (whose titles follow the model and the recorder), View (the
// sidebar, the display modes, full screen) and Help. The skip keys, space, F and the page keys
// are the model's own keys, not menu shortcuts: the menus only show them.
class ContentView;
class PlayerModel;
class QMenuBar;

namespace ApplicationMenus {

void install(QMenuBar &menuBar, PlayerModel &model, ContentView &content);

} // namespace ApplicationMenus
