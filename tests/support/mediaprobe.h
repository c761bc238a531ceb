#pragma once
// Reads back a recording with ffprobe and ffmpeg: its streams, a decoded picture, its sound.
#include <QImage>
#include <QJsonObject>
#include <QString>
#include <QVector>

namespace MediaProbe {

// ffprobe's streams and format of the file; empty when it cannot read it.
QJsonObject probe(const QString &path);
// How many pictures the file's video track holds (its packets, as ffprobe counts them); 0 when
// it cannot be read.
int videoPacketCount(const QString &path);
// The first stream of a type ("video" or "audio") in probe's answer.
QJsonObject stream(const QJsonObject &probed, const QString &type);
// The container's duration in seconds; -1 when unknown.
double duration(const QJsonObject &probed);
// The picture shown at seconds, as RGB; null when ffmpeg cannot decode it.
QImage frameAt(const QString &path, double seconds);
// The sound, mixed to one channel at 48 kHz.
QVector<float> sound(const QString &path);
// How strongly frequency sounds in samples compared with the whole signal (0 … 1).
double toneShare(const QVector<float> &samples, double frequency, int sampleRate = 48'000);
// True when ffmpeg decodes the whole file without a single error.
bool decodesCleanly(const QString &path, QString *errors = nullptr);
// How far a recording's sound lags its pictures (negative: leads), in seconds: the median, over
// the flashes of a flash-and-beep clip (TestMedia::makeFlashBeep), of the time from a flash's
// first bright frame to its beep's first loud sample. NaN when no pair is found; count, when
// given, receives how many flashes were paired.
double flashBeepOffset(const QString &path, int *count = nullptr);
// The mean colour of a rectangle of an image.
QColor meanColour(const QImage &image, const QRect &rect);
// The smallest rectangle holding every near-white pixel (each channel above 200): the letters
// of white text on a dark picture. Empty when there is none.
QRect whiteArea(const QImage &image);

} // namespace MediaProbe
