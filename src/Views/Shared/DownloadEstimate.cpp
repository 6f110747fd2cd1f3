#include "Views/Shared/DownloadEstimate.h"

#include <QCoreApplication>
#include <cmath>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

/// Long enough to be steady, short enough to follow the network.
constexpr auto window = 8s;
constexpr auto shortestSpan = 500ms;

QString timeLeft(double seconds)
{
    const auto count = [](const char *text, double value) {
        return QCoreApplication::translate("DownloadEstimate", text).arg(qRound(std::ceil(value)));
    };
    if (seconds < 60)
        return count("%1 s left", seconds);
    if (seconds < 3600)
        return count("%1 min left", seconds / 60);
    return count("%1 h left", seconds / 3600);
}

} // namespace

DownloadEstimate::DownloadEstimate(int megabytes)
    : m_megabytes(megabytes)
{
}

void DownloadEstimate::update(double progress, TimePoint now)
{
    if (!m_samples.empty() && progress < m_samples.back().progress)
        m_samples.clear();
    m_samples.push_back({now, progress});
    while (m_samples.size() > 2 && now - m_samples.front().time > window)
        m_samples.pop_front();
}

QString DownloadEstimate::text() const
{
    if (m_samples.size() < 2)
        return {};
    const auto span = m_samples.back().time - m_samples.front().time;
    const double received = (m_samples.back().progress - m_samples.front().progress) * m_megabytes;
    if (span < shortestSpan || received <= 0)
        return {};
    const double speed = received / std::chrono::duration<double>(span).count();
    return QCoreApplication::translate("DownloadEstimate", "%1 MB/s, %2")
        .arg(speed, 0, 'f', 1)
        .arg(timeLeft((1 - m_samples.back().progress) * m_megabytes / speed));
}

} // namespace Velloro
