#pragma once
// The recordings under way, one small file each in a folder of their own, so that one cut short
// by a crash or a power cut is found and finished when the player starts again. While its
// recording runs an entry is locked, so another player never touches a recording in progress.
#include <QList>
#include <QString>
#include <memory>

namespace RecordingJournal {

// Where the entries are kept: LumoMediaPlayer/unfinished in the user's data folder.
QString defaultFolder();

// The entry of one recording under way: written and locked when made, removed once the
// recording is finished (or failed for good) and the entry is destroyed.
class Entry final
{
public:
    ~Entry();
    Entry(const Entry &) = delete;
    Entry &operator=(const Entry &) = delete;

    // Null when the entry cannot be written; the recording then goes on without one.
    static std::unique_ptr<Entry> begin(const QString &folder, const QString &recordingPath);

private:
    Entry(int descriptor, QString file);
    int m_descriptor = -1;
    QString m_file;
};

// What became of one recording found unfinished.
struct Recovery
{
    QString path;
    // Empty when the recording was finished, or when there was nothing left to finish.
    QString error;
    // False when its file was gone, or already finished.
    bool finished = false;
};

// Finishes every recording whose entry nobody holds, and removes their entries. Blocks for as
// long as finishing takes: run it off the main thread.
QList<Recovery> recoverAll(const QString &folder);

} // namespace RecordingJournal
