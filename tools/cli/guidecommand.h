#pragma once

// `lumo-cli guide PLAYLIST [GUIDE…] --at ISO8601`: what is on now and next for every channel of
// a playlist, as JSON Lines.

#include <QStringList>

// Returns the process exit code; writes the result to stdout, notices and errors to stderr.
int runGuideCommand(const QStringList &arguments);
