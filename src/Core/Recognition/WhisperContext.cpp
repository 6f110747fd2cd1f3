#include "Core/Recognition/WhisperContext.h"

#include "Core/Recognition/WhisperContextExecutor.h"

#include <utility>

namespace Velloro {

WhisperContext::WhisperContext(std::shared_ptr<const ProcessInfo> processInfo)
    : m_executor(std::make_shared<Executor>(std::move(processInfo)))
{
}

WhisperContext::~WhisperContext()
{
    m_executor->dropWaitingSamples();
    m_executor->run([](Executor &executor) { executor.release(); });
}

QFuture<WhisperContext::LoadResult> WhisperContext::loadModel(const QString &path)
{
    return m_executor->run([path](Executor &executor) { return executor.loadModel(path); });
}

QFuture<void> WhisperContext::unloadModel()
{
    return m_executor->run([](Executor &executor) { executor.unloadModel(); });
}

QFuture<void> WhisperContext::setLanguage(const QString &code)
{
    return m_executor->run([code](Executor &executor) { executor.setLanguage(code); });
}

QFuture<void> WhisperContext::setCustomDictionary(const QStringList &words)
{
    return m_executor->run([words](Executor &executor) { executor.setCustomDictionary(words); });
}

QFuture<WhisperContext::TranscriptionResult> WhisperContext::transcribe(std::vector<float> samples)
{
    return m_executor->run([samples = std::move(samples)](Executor &executor) {
        return executor.transcribe(samples);
    });
}

QFuture<void> WhisperContext::startStreaming(TranscriptionCallback callback)
{
    return m_executor->run([callback = std::move(callback)](Executor &executor) mutable {
        executor.startStreaming(std::move(callback));
    });
}

QFuture<void> WhisperContext::addAudioSamples(std::vector<float> samples)
{
    return m_executor->feed(samples);
}

QFuture<void> WhisperContext::stopStreaming()
{
    // At once, so that no pass over what still waits comes before the stop.
    m_executor->dropWaitingSamples();
    return m_executor->run([](Executor &executor) { executor.stopStreaming(); });
}

} // namespace Velloro
