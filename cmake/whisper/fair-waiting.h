/* Read before each of ggml's C sources: a thread that waits for another spins, but lets other
   programs have the processor every few microseconds. Otherwise, where they want it too, it holds
   up the very thread that it waits for, and recognition takes many times as long. */
#pragma once

#if defined(__x86_64__)

#include <immintrin.h>
#include <sched.h>

static inline void velloro_pause(void)
{
    static __thread unsigned pauses = 0;
    if (++pauses % 128 == 0)
        sched_yield();
    else
        _mm_pause();
}

#define _mm_pause velloro_pause

#endif
