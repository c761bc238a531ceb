#include "entryroom.h"

#include "hugepages.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

EntryRoom::EntryRoom(qsizetype capacity)
{
    capacity = std::max<qsizetype>(capacity, 1);
    auto [header, entries] = Data::allocate(capacity);
    if (!header)
        throw std::bad_alloc();
    m_header = header;
    m_entries = entries;
    m_capacity = capacity;
    m_back = capacity;
    adviseHugePages(m_entries, m_capacity * qsizetype(sizeof(PlaylistEntry)));
}

EntryRoom::~EntryRoom()
{
    if (!m_header)
        return;
    std::destroy(m_entries, m_entries + m_front);
    std::destroy(m_entries + m_back, m_entries + m_capacity);
    Data::deallocate(m_header);
}

PlaylistEntry *EntryRoom::claimFront(qsizetype count)
{
    if (!m_header || m_back - m_front < count)
        return nullptr;
    PlaylistEntry *const slots = m_entries + m_front;
    m_front += count;
    return slots;
}

PlaylistEntry *EntryRoom::claimBack(qsizetype count)
{
    if (!m_header || m_back - m_front < count)
        return nullptr;
    m_back -= count;
    return m_entries + m_back;
}

QList<PlaylistEntry> EntryRoom::take()
{
    if (!m_header)
        return {};
    const qsizetype backCount = m_capacity - m_back;
    // Entries hold nothing that points into themselves, so they move as bytes.
    if (m_back > m_front) {
        std::memmove(static_cast<void *>(m_entries + m_front), m_entries + m_back,
                     size_t(backCount) * sizeof(PlaylistEntry));
    }
    QList<PlaylistEntry> entries(
        QArrayDataPointer<PlaylistEntry>(m_header, m_entries, m_front + backCount));
    m_header = nullptr;
    m_entries = nullptr;
    m_capacity = m_front = m_back = 0;
    return entries;
}
