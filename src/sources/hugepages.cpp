#include "hugepages.h"

#include <sys/mman.h>

void adviseHugePages(const void *data, qsizetype bytes)
{
    constexpr quintptr hugePageSize = quintptr(2) << 20;
    const auto begin = quintptr(data);
    const quintptr first = (begin + hugePageSize - 1) & ~(hugePageSize - 1);
    const quintptr last = (begin + quintptr(bytes)) & ~(hugePageSize - 1);
    if (last > first)
        madvise(reinterpret_cast<void *>(first), last - first, MADV_HUGEPAGE);
}
