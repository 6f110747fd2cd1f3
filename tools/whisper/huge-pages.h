/* Read before each of ggml's C sources: large allocations are put on huge pages where the system
   lets programs ask for them. A token's decoding reads all of a model's weights, and a small page's
   end stops the processor from fetching ahead. */
#pragma once

#include <stdlib.h>
#include <sys/mman.h>

static inline int velloro_posix_memalign(void **memory, size_t alignment, size_t size)
{
    const size_t huge_page = (size_t)1 << 21;
    if (size < 4 * huge_page)
        return posix_memalign(memory, alignment, size);
    const int code = posix_memalign(memory, huge_page, size);
    if (code == 0)
        madvise(*memory, size, MADV_HUGEPAGE); /* A wish: the result changes nothing. */
    return code;
}

#define posix_memalign velloro_posix_memalign
