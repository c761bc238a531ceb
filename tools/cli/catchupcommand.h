#pragma once

// `lumo-cli catchup PLAYLIST --channel N --start ISO --stop ISO --now ISO`: the archive address
// of a programme of a playlist's channel.

#include <QStringList>

// Returns the process exit code; writes the address to stdout, errors to stderr.
int runCatchupCommand(const QStringList &arguments);
