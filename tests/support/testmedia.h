#pragma once
// Media for the tests, made with ffmpeg's test sources (a colour pattern and a sine tone).
#include <QSize>
#include <QString>
#include <QStringList>

namespace TestMedia {

// An H.264/AAC MP4 of the given length; false (with a test failure message) when ffmpeg fails.
bool makeClip(const QString &path, double seconds, QSize size = {320, 240}, int fps = 25,
              bool withAudio = true);
// A still picture in thirds, red, green and blue from left to right, under a white band across
// the top tenth: where each part lands shows how the picture was placed, cropped and turned.
// With toneHz, a sine tone of that frequency plays along.
bool makeColourThirds(const QString &path, QSize size, double seconds = 30, int toneHz = 0);
// imagePath scaled to the frame's height on mid-grey, held at the left for holdSeconds, then
// moving to the right edge over moveSeconds, then held there; no audio.
bool makeMovingPicture(const QString &path, const QString &imagePath, QSize size,
                       double holdSeconds, double moveSeconds);
// A video of size on mid-grey in which the picture at imagePath, scaled to pictureWidth
// pixels wide and vertically centred, walks at an even pace from left (its left edge at
// fromX) to toX over seconds.
bool makeWalkingPicture(const QString &path, const QString &imagePath, QSize size, int pictureWidth,
                        int fromX, int toX, double seconds);
// A video showing the still picture at imagePath (scaled to size) for seconds.
bool makeStill(const QString &path, const QString &imagePath, QSize size, double seconds);
// A copy of source whose container says to show it turned by degrees (FFmpeg's rotate tag), as
// phones record upright video: the pictures are stored as they were.
// A black picture that flashes white for a tenth of a second at the start of every second, with
// a 1 kHz beep at the same instants.
bool makeFlashBeep(const QString &path, double seconds, QSize size = {640, 360});
bool makeRotated(const QString &source, const QString &path, int degrees);
// count MPEG-TS segments of one second each, named seg0.ts, seg1.ts, ... in folder.
bool makeSegments(const QString &folder, int count);
// A live HLS index over those segments: a window of `window` segments that slides by one each
// second since startMs, with no end marker.
QByteArray liveIndex(qint64 elapsedMs, int segmentCount, int window = 4);

// A SubRip file with one cue saying text (its bytes as they are: any encoding) from the start
// to seconds.
bool writeSubRip(const QString &path, const QByteArray &text, double seconds);
// A Matroska clip with two sounds, 440 Hz in English (flagged default when flagged) and 880 Hz
// in French titled "Commentary", and two SubRip tracks, English and French, each saying its
// language's text throughout. dark: a black picture, for reading subtitle pixels.
bool makeTracks(const QString &path, double seconds, bool flagged, bool dark = false,
                QSize size = {320, 240}, const QString &englishText = QStringLiteral("Hello"),
                const QString &frenchText = QStringLiteral("Bonjour"));
// An MPEG-TS of a small picture and a tone, as a TV channel sends over plain HTTP.
bool makeTransportStream(const QString &path, double seconds);
// HLS in folder/master.m3u8: a video and one audio group of two renditions, English (440 Hz,
// the default) and French (880 Hz).
bool makeHlsWithTwoLanguages(const QString &folder, double seconds);

} // namespace TestMedia
