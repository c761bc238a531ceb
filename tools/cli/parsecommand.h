#pragma once

// `lumo-cli parse-m3u FILE [--base ADDRESS] [--count]`: what the player makes of a playlist.

#include <QStringList>

// Returns the process exit code; writes the result to stdout and errors to stderr.
int runParseCommand(const QStringList &arguments);
