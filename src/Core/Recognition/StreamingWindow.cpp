#include "Core/Recognition/StreamingWindow.h"

#include <iterator>

namespace Velloro {

namespace {

constexpr double sampleRate = 16000.0;
constexpr double chunkDurationSeconds = 1.5;
constexpr auto passInterval = static_cast<qsizetype>(sampleRate * chunkDurationSeconds);
/// The most that a pass hears.
constexpr qsizetype windowLimit = 240'000;

} // namespace

void StreamingWindow::append(std::span<const float> samples)
{
    m_audioBuffer.insert(m_audioBuffer.end(), samples.begin(), samples.end());
    // The next pass would drop it. Not each time, since that moves the rest.
    if (std::ssize(m_audioBuffer) > 2 * windowLimit)
        trim();
}

void StreamingWindow::append(const StreamingWindow &later)
{
    if (later.m_start > 0) {
        m_start = end() + later.m_start;
        m_audioBuffer.clear();
    }
    append(later.m_audioBuffer);
}

bool StreamingWindow::isPassDue() const
{
    return end() - m_lastProcessedSamples >= passInterval;
}

void StreamingWindow::trim()
{
    const qsizetype surplus = std::ssize(m_audioBuffer) - windowLimit;
    if (surplus <= 0)
        return;
    m_audioBuffer.erase(m_audioBuffer.begin(), m_audioBuffer.begin() + surplus);
    m_start += surplus;
}

void StreamingWindow::markProcessed()
{
    m_lastProcessedSamples = end();
}

double StreamingWindow::startTime() const
{
    return static_cast<double>(m_start) / sampleRate;
}

double StreamingWindow::endTime() const
{
    return static_cast<double>(end()) / sampleRate;
}

qsizetype StreamingWindow::end() const
{
    return m_start + std::ssize(m_audioBuffer);
}

} // namespace Velloro
