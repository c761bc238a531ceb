#include "freedmemory.h"

#include <QtGlobal>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

void keepLargeBlocksOutOfArenas()
{
#if defined(__GLIBC__)
    // glibc raises both thresholds each time a mapped block is freed (up to 32 and 64 MB), and
    // from then on keeps large blocks, and that much free memory, in every arena. Fixed ones
    // keep blocks over 128 KB mapped on their own, and trim an arena once 128 KB are free at its
    // end. Pictures come from FFmpeg's pools, so this costs no system call per frame.
    mallopt(M_MMAP_THRESHOLD, 4 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024);
#endif
}

} // namespace

void releaseFreedMemory()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

// Before main, so that no thread has picked an arena yet: set later, the same thresholds leave
// arenas as they were (measured with a channel reloaded 40 times).
Q_CONSTRUCTOR_FUNCTION(keepLargeBlocksOutOfArenas)
