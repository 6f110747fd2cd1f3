#include <chrono>
#include <cstdio>
#include <whisper.h>

// Stands before whisper.cpp's recognition in the program that benchmarks/run measures (the linker's
// --wrap): prints when each call began and ended, in seconds of the monotonic clock.

extern "C" int __real_whisper_full_with_state(whisper_context *context, whisper_state *state,
                                              whisper_full_params parameters, const float *samples,
                                              int count);

extern "C" int __wrap_whisper_full_with_state(whisper_context *context, whisper_state *state,
                                              whisper_full_params parameters, const float *samples,
                                              int count)
{
    using Seconds = std::chrono::duration<double>;
    const auto now
        = [] { return Seconds(std::chrono::steady_clock::now().time_since_epoch()).count(); };
    const double start = now();
    const int code = __real_whisper_full_with_state(context, state, parameters, samples, count);
    std::printf("[Timing] whisper_full %.6f %.6f\n", start, now());
    std::fflush(stdout);
    return code;
}
