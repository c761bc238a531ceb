#pragma once

// Room for a large list's entries that two readers fill at once: one from the start up, the
// other from an estimated end down. The gap the estimate leaves is closed when the list is
// taken, so that the entries are written once into the memory the list keeps, not gathered
// from two lists into a third.

#include "playlistentry.h"

#include <QList>

class EntryRoom
{
public:
    // Room for capacity entries, none placed yet; nothing is touched until entries are placed.
    explicit EntryRoom(qsizetype capacity);
    ~EntryRoom();
    EntryRoom(const EntryRoom &) = delete;
    EntryRoom &operator=(const EntryRoom &) = delete;

    // Where count entries go next, after those placed from the start or before those placed
    // from the end; null when the two ends would meet. The caller moves the entries there
    // before the room is taken; two callers may fill the two slots they got at once.
    PlaylistEntry *claimFront(qsizetype count);
    PlaylistEntry *claimBack(qsizetype count);
    qsizetype frontCount() const { return m_front; }

    // The entries from the start, then those from the end; the room is empty afterwards.
    QList<PlaylistEntry> take();

private:
    using Data = QTypedArrayData<PlaylistEntry>;
    Data *m_header = nullptr;
    PlaylistEntry *m_entries = nullptr;
    qsizetype m_capacity = 0;
    qsizetype m_front = 0; // placed from the start: [0, m_front)
    qsizetype m_back = 0; // placed from the end: [m_back, m_capacity)
};
