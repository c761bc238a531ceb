#pragma once

// Room for the texts of many playlist entries, carved out of large shared chunks: a huge list
// makes one allocation per chunk of channels instead of one per channel. A chunk is freed when
// the last block in it is.

#include <QtGlobal>

#include <memory>

class EntryTextArena
{
public:
    // size bytes, not initialised, aligned for UTF-16, valid while the pointer or a copy lives.
    std::shared_ptr<char> allocate(qsizetype size);

    // The same on its own, for an entry made outside a parse.
    static std::shared_ptr<char> allocateAlone(qsizetype size);

private:
    std::shared_ptr<char[]> m_chunk;
    qsizetype m_used = 0;
    qsizetype m_capacity = 0;
};
