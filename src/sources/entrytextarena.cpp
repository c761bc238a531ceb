#include "entrytextarena.h"

#include <sys/mman.h>

namespace {

// Chunks grow from small (a short list stays small) to the size of a huge page, which the
// kernel may then map in one fault instead of 512.
constexpr qsizetype firstChunkSize = qsizetype(64) << 10;
constexpr qsizetype hugePageSize = qsizetype(2) << 20;
// A block bigger than this gets its own allocation rather than ending a chunk early.
constexpr qsizetype largestShared = firstChunkSize / 4;

std::shared_ptr<char[]> mappedChunk(qsizetype size)
{
    void *const address
        = mmap(nullptr, size_t(size), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED)
        throw std::bad_alloc();
    madvise(address, size_t(size), MADV_HUGEPAGE);
    return std::shared_ptr<char[]>(static_cast<char *>(address),
                                   [size](char *chunk) { munmap(chunk, size_t(size)); });
}

} // namespace

std::shared_ptr<char> EntryTextArena::allocate(qsizetype size)
{
    if (size > largestShared)
        return allocateAlone(size);
    if (m_capacity - m_used < size) {
        m_capacity = m_capacity == 0 ? firstChunkSize : std::min(m_capacity * 2, hugePageSize);
        m_chunk = m_capacity == hugePageSize
            ? mappedChunk(m_capacity)
            : std::make_shared_for_overwrite<char[]>(size_t(m_capacity));
        m_used = 0;
    }
    char *const block = m_chunk.get() + m_used;
    // Names come first in a block and are read as UTF-16.
    m_used += (size + qsizetype(alignof(char16_t)) - 1) & ~(qsizetype(alignof(char16_t)) - 1);
    return std::shared_ptr<char>(m_chunk, block);
}

std::shared_ptr<char> EntryTextArena::allocateAlone(qsizetype size)
{
    std::shared_ptr<char[]> owner = std::make_shared_for_overwrite<char[]>(size_t(size));
    char *const block = owner.get();
    return std::shared_ptr<char>(std::move(owner), block);
}
