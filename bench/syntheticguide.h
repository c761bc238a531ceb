#pragma once
// Realistic XMLTV guides for the benchmarks: half-hour programmes on numbered channels, titles
// drawn from a pool as real schedules repeat them, and the playlist that names those channels.
#include <QByteArray>
#include <QString>

struct SyntheticGuide
{
    int channels = 1000;
    int days = 7;
    qint64 firstDay = 0; // seconds since the epoch of the first day's midnight, UTC
    bool descriptions = true; // a description and a category for each programme
};

// Writes the guide to path; false when it cannot. Returns the programmes written in count.
bool writeSyntheticGuide(const QString &path, const SyntheticGuide &guide, qint64 *count = nullptr);

// A playlist of every step-th channel of the guide (channels / step entries), whose header names
// guideName as its guide, and says headerAttributes besides (catch-up, for one).
QByteArray syntheticGuidePlaylist(int channels, int step, const QString &guideName,
                                  const QByteArray &headerAttributes = {});
