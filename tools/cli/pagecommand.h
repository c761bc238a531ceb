#pragma once

// `lumo-cli page ADDRESS [--origin ORIGIN]`: the player page generated for a video-service
// address, exactly as the web player loads it.

#include <QStringList>

int runPageCommand(const QStringList &arguments);
