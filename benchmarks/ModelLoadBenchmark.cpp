#include "Core/Recognition/WhisperContext.h"
#include "Platform/Linux/Process/LinuxProcessInfo.h"

#include <QFile>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>

namespace {

/// The model file that the environment variable VELLORO_BENCHMARK_MODEL names.
const char *modelPath()
{
    const char *const path = std::getenv("VELLORO_BENCHMARK_MODEL");
    return path ? path : "";
}

void loadModel(benchmark::State &state)
{
    const auto processInfo = std::make_shared<const Velloro::LinuxProcessInfo>();
    const QString path = QFile::decodeName(modelPath());
    for ([[maybe_unused]] auto iteration : state) {
        Velloro::WhisperContext context(processInfo);
        if (!context.loadModel(path).result()) {
            state.SkipWithError("the model can't be loaded: set VELLORO_BENCHMARK_MODEL");
            return;
        }
        state.PauseTiming();
        context.unloadModel().waitForFinished();
        state.ResumeTiming();
    }
}

/// What reading the file costs, into memory that is new as a model's is.
void readFile(benchmark::State &state)
{
    for ([[maybe_unused]] auto iteration : state) {
        QFile file(QFile::decodeName(modelPath()));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            state.SkipWithError("the model can't be read: set VELLORO_BENCHMARK_MODEL");
            return;
        }
        const std::unique_ptr<char[]> content(new char[static_cast<size_t>(file.size())]);
        qint64 read = 0;
        while (read < file.size()) {
            const qint64 count = file.read(content.get() + read, file.size() - read);
            if (count <= 0)
                break;
            read += count;
        }
        benchmark::DoNotOptimize(content.get());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(loadModel)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(readFile)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace

BENCHMARK_MAIN();
