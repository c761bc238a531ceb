#pragma once
// Rewrites a recording made in fragments as one plain MP4 with its index at the front, which
// every player reads and seeks in quickly. The fragments are what keep a recording cut short by
// a crash playable; the plain file is what a finished recording becomes.
#include <QString>

namespace Mp4Finisher {

// Copies source's streams into target (replacing it) without re-encoding. Empty on success,
// otherwise why it failed; a failed target is removed.
QString rewriteWithIndexFirst(const QString &source, const QString &target);

} // namespace Mp4Finisher
