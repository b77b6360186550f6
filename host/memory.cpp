#include "memory.hpp"

#include <malloc.h>

namespace qel::host {

void PrepareForLongRun() noexcept {
    // A fixed threshold; of itself it would rise with the largest piece ever freed.
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
    // Decoders come and go with their threads; each thread with a heap of its own would leave its gaps behind.
    mallopt(M_ARENA_MAX, 2);
}

void ReleaseFreeMemory() noexcept { malloc_trim(0); }

}  // namespace qel::host
