#include "freedmemory.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

void releaseFreedMemory()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}
