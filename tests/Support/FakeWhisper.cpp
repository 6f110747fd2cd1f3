#include "Support/FakeWhisper.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <whisper.h>

using namespace Velloro::FakeWhisper;

struct whisper_context
{
    bool timingsReset = false;
};

struct whisper_state
{
    whisper_context *context = nullptr;
    QList<std::optional<QByteArray>> segments;
    bool busy = false;
};

namespace {

struct Gate
{
    bool held = false;
    int permits = 0;
    int waiting = 0;
};

/// Everything that is scripted and recorded.
struct World
{
    std::mutex mutex;
    std::condition_variable changed;
    std::function<bool(const QString &)> loadScript;
    StateCreation stateCreation = StateCreation::succeeds;
    std::deque<Result> results;
    std::vector<Call> calls;
    std::vector<Load> loads;
    bool logSilenced = false;
    std::set<whisper_context *> contexts;
    std::set<whisper_state *> states;
    std::array<Gate, 3> gates;

    Gate &gate(Point point) { return gates.at(static_cast<size_t>(point)); }

    void passGate(std::unique_lock<std::mutex> &lock, Point point)
    {
        Gate &gate = this->gate(point);
        if (!gate.held)
            return;
        ++gate.waiting;
        changed.notify_all();
        changed.wait(lock, [&] { return !gate.held || gate.permits > 0; });
        if (gate.held)
            --gate.permits;
        --gate.waiting;
    }

    void require(whisper_context *context)
    {
        if (!contexts.contains(context))
            qFatal("whisper.cpp was called with a model that is not live");
    }

    void require(whisper_state *state)
    {
        if (!states.contains(state))
            qFatal("whisper.cpp was called with a decoding state that is not live");
        require(state->context);
    }
};

/// Never destroyed: a context that is let go at exit may still free its handles.
World &world()
{
    static World *const instance = std::make_unique<World>().release();
    return *instance;
}

/// Compares every byte, which the defaults have all set: no field is forgotten.
template <typename Parameters>
bool same(const Parameters &one, const Parameters &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

bool othersUntouched(whisper_full_params params)
{
    const whisper_full_params plain = whisper_full_default_params(params.strategy);
    params.n_threads = plain.n_threads;
    params.offset_ms = plain.offset_ms;
    params.translate = plain.translate;
    params.no_context = plain.no_context;
    params.single_segment = plain.single_segment;
    params.print_special = plain.print_special;
    params.print_progress = plain.print_progress;
    params.print_realtime = plain.print_realtime;
    params.print_timestamps = plain.print_timestamps;
    params.language = plain.language;
    params.initial_prompt = plain.initial_prompt;
    return same(params, plain);
}

bool othersUntouched(whisper_context_params params)
{
    const whisper_context_params plain = whisper_context_default_params();
    params.flash_attn = plain.flash_attn;
    return same(params, plain);
}

} // namespace

namespace Velloro::FakeWhisper {

void reset()
{
    const std::lock_guard lock(world().mutex);
    world().loadScript = {};
    world().stateCreation = StateCreation::succeeds;
    world().results.clear();
    world().calls.clear();
    world().loads.clear();
    for (Gate &gate : world().gates)
        gate.held = false;
    world().changed.notify_all();
}

void setLoadScript(std::function<bool(const QString &)> script)
{
    const std::lock_guard lock(world().mutex);
    world().loadScript = std::move(script);
}

void setStateCreation(StateCreation outcome)
{
    const std::lock_guard lock(world().mutex);
    world().stateCreation = outcome;
}

void enqueue(Result result)
{
    const std::lock_guard lock(world().mutex);
    world().results.push_back(std::move(result));
}

void enqueueSegments(const QList<QByteArray> &segments)
{
    enqueue({.segments = {segments.cbegin(), segments.cend()}});
}

std::vector<Call> calls()
{
    const std::lock_guard lock(world().mutex);
    return world().calls;
}

std::vector<Load> loads()
{
    const std::lock_guard lock(world().mutex);
    return world().loads;
}

int liveContexts()
{
    const std::lock_guard lock(world().mutex);
    return static_cast<int>(world().contexts.size());
}

int liveStates()
{
    const std::lock_guard lock(world().mutex);
    return static_cast<int>(world().states.size());
}

bool isLogSilenced()
{
    const std::lock_guard lock(world().mutex);
    return world().logSilenced;
}

Hold::Hold(Point point)
    : m_point(point)
{
    const std::lock_guard lock(world().mutex);
    world().gate(m_point).held = true;
    world().gate(m_point).permits = 0;
}

Hold::~Hold()
{
    release();
}

bool Hold::waitUntilHeld() const
{
    std::unique_lock lock(world().mutex);
    const Gate &gate = world().gate(m_point);
    return world().changed.wait_for(lock, std::chrono::seconds(10),
                                    [&] { return gate.waiting > gate.permits; });
}

void Hold::letOneThrough()
{
    const std::lock_guard lock(world().mutex);
    ++world().gate(m_point).permits;
    world().changed.notify_all();
}

void Hold::release()
{
    const std::lock_guard lock(world().mutex);
    world().gate(m_point).held = false;
    world().changed.notify_all();
}

} // namespace Velloro::FakeWhisper

extern "C" {

// The fields that the program must set start out wrong, so that leaving one out shows; those that
// it might be tempted to set to nothing are not nothing, as in the library.

whisper_context_params whisper_context_default_params()
{
    whisper_context_params params;
    std::memset(&params, 0, sizeof params);
    params.use_gpu = true;
    params.flash_attn = false;
    return params;
}

whisper_full_params whisper_full_default_params(whisper_sampling_strategy strategy)
{
    whisper_full_params params;
    std::memset(&params, 0, sizeof params);
    params.strategy = strategy;
    params.n_threads = -1;
    params.n_max_text_ctx = 16384;
    params.offset_ms = 1;
    params.translate = true;
    params.no_context = strategy != WHISPER_SAMPLING_GREEDY;
    params.single_segment = true;
    params.print_special = true;
    params.print_progress = true;
    params.print_realtime = true;
    params.print_timestamps = true;
    params.language = "xx";
    params.suppress_blank = true;
    params.temperature_inc = 0.2F;
    params.entropy_thold = 2.4F;
    params.logprob_thold = -1.0F;
    params.no_speech_thold = 0.6F;
    params.greedy.best_of = 5;
    return params;
}

whisper_context *whisper_init_from_file_with_params_no_state(const char *path,
                                                             whisper_context_params params)
{
    std::unique_lock lock(world().mutex);
    const QString name = QFile::decodeName(path);
    world().loads.push_back({.path = name,
                             .flashAttention = params.flash_attn,
                             .othersUntouched = othersUntouched(params)});
    world().passGate(lock, Point::load);
    if (!QFileInfo::exists(name) || (world().loadScript && !world().loadScript(name)))
        return nullptr;
    return *world().contexts.insert(std::make_unique<whisper_context>().release()).first;
}

whisper_state *whisper_init_state(whisper_context *context)
{
    const std::lock_guard lock(world().mutex);
    world().require(context);
    if (world().stateCreation == StateCreation::throws)
        throw std::bad_alloc();
    if (world().stateCreation == StateCreation::fails)
        return nullptr;
    auto state = std::make_unique<whisper_state>();
    state->context = context;
    return *world().states.insert(state.release()).first;
}

void whisper_free_state(whisper_state *state)
{
    const std::lock_guard lock(world().mutex);
    if (!state)
        return;
    world().require(state);
    if (state->busy)
        qFatal("whisper.cpp was told to free a decoding state that is transcribing");
    world().states.erase(state);
    const std::unique_ptr<whisper_state> freed(state);
}

void whisper_free(whisper_context *context)
{
    std::unique_lock lock(world().mutex);
    if (!context)
        return;
    world().require(context);
    const auto isOfContext = [context](whisper_state *state) { return state->context == context; };
    if (std::ranges::any_of(world().states, isOfContext))
        qFatal("whisper.cpp was told to free a model before its decoding state");
    world().passGate(lock, Point::release);
    world().contexts.erase(context);
    const std::unique_ptr<whisper_context> freed(context);
}

void whisper_log_set(ggml_log_callback callback, void *)
{
    const std::lock_guard lock(world().mutex);
    world().logSilenced = callback != nullptr;
}

void whisper_reset_timings(whisper_context *context)
{
    const std::lock_guard lock(world().mutex);
    world().require(context);
    context->timingsReset = true;
}

int whisper_full_with_state(whisper_context *context, whisper_state *state,
                            whisper_full_params params, const float *samples, int count)
{
    std::unique_lock lock(world().mutex);
    world().require(state);
    if (state->context != context)
        qFatal("whisper.cpp was given the decoding state of another model");
    if (state->busy)
        qFatal("whisper.cpp was asked for two transcriptions at a time");
    const bool quiet = params.offset_ms == 0 && !params.translate && !params.single_segment
        && !params.print_special && !params.print_progress && !params.print_realtime
        && !params.print_timestamps;
    world().calls.push_back({.samples = {samples, samples + count},
                             .samplesRead = {samples, samples + std::max(count, 201)},
                             .threads = params.n_threads,
                             .greedy = params.strategy == WHISPER_SAMPLING_GREEDY,
                             .noContext = params.no_context,
                             .language = params.language,
                             .prompt = params.initial_prompt
                                 ? std::optional<QByteArray>(params.initial_prompt)
                                 : std::nullopt,
                             .quiet = quiet,
                             .othersUntouched = othersUntouched(params),
                             .timingsReset = std::exchange(context->timingsReset, false)});
    Result result{.segments = {QByteArrayLiteral(" Hello world.")}};
    if (!world().results.empty()) {
        result = std::move(world().results.front());
        world().results.pop_front();
    }

    state->busy = true;
    world().passGate(lock, Point::transcription);
    state->busy = false;
    state->segments = std::move(result.segments);
    return result.code;
}

int whisper_full_n_segments_from_state(whisper_state *state)
{
    const std::lock_guard lock(world().mutex);
    world().require(state);
    return static_cast<int>(state->segments.size());
}

const char *whisper_full_get_segment_text_from_state(whisper_state *state, int index)
{
    const std::lock_guard lock(world().mutex);
    world().require(state);
    if (index < 0 || index >= state->segments.size())
        qFatal("whisper.cpp was asked for a segment that it does not have");
    const std::optional<QByteArray> &text = std::as_const(state->segments).at(index);
    return text ? text->constData() : nullptr;
}

} // extern "C"
