#pragma once
// "About LumoMediaPlayerPro": the version, the libraries it runs on and the face models'
// licences.
#include <QString>

class QWidget;

namespace AboutBox {

inline constexpr char16_t title[] = u"About LumoMediaPlayerPro";

// The box's text, one fact a line.
QString text();
// Shows it over parent, without blocking the player.
void show(QWidget *parent);

} // namespace AboutBox
