#include "app/MemoryTuning.h"

#include <cstdlib> // defines __GLIBC__ on glibc systems

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace quillon {

void keepFreedMemoryForReuse()
{
#if defined(__GLIBC__)
    // Blocks below 32 MB come from the heap rather than from a mapping of
    // their own, and up to 64 MB of free memory at the top of a heap stays
    // mapped. The retained memory is reused by the next task, so a run's
    // footprint stays flat.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 64 * 1024 * 1024);
#endif
}

} // namespace quillon
