/* Read before each of ggml's C sources: the weights of large models are put on huge pages where the
   system leaves that to programs. Decoding a token reads all of them, and the end of a small page
   stops the processor from fetching ahead. */
#pragma once

#include <stdlib.h>
#include <sys/mman.h>

static inline int velloro_posix_memalign(void **memory, size_t alignment, size_t size)
{
    const size_t huge_page = (size_t)1 << 21;
    if (size < 64 * huge_page)
        return posix_memalign(memory, alignment, size);
    const int code = posix_memalign(memory, huge_page, size);
    if (code == 0)
        madvise(*memory, size, MADV_HUGEPAGE); /* A wish: the result changes nothing. */
    return code;
}

#define posix_memalign velloro_posix_memalign
