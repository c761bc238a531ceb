#pragma once
// Turns a recording made in fragments into one plain MP4 with its index at the front, which
// every player reads and seeks in quickly. The fragments are what keep a recording cut short by
// a crash playable; the plain file is what a finished recording becomes. Finishing writes the
// plain file once, beside the recording, and only then puts it in the recording's place, so a
// crash at any moment leaves a file that plays.
#include <QString>

namespace Mp4Finisher {

// The name the finished copy is written under while it is made: hidden, beside path.
QString finishingPath(const QString &path);
// True when the file at path is an MP4 written in fragments (not yet finished).
bool isFragmented(const QString &path);
// Rewrites the fragmented recording at path, without re-encoding, in one pass, and moves the
// result over path. packetCount is how many packets it holds, which sizes the room kept for the
// index; 0 counts them first, for a file cut off by a crash, whose broken end is left out. Empty on
// success; otherwise why, and path is left as it was.
QString finishInPlace(const QString &path, qint64 packetCount = 0);

} // namespace Mp4Finisher
