#include "Views/Pill/RecordingPillViewModel.h"

#include "Base/Graphemes.h"
#include "Base/StringLiterals.h"
#include "Views/Shared/StatusText.h"

#include <algorithm>
#include <array>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr std::array<double, 5> weights{0.7, 1.0, 0.85, 0.95, 0.75};
constexpr double gain = 14;
constexpr double minimumHeight = 6;
constexpr double maximumHeight = 20;
constexpr auto barDuration = 100ms;
// Half as often as windows are painted at most: it looks the same and costs half the processor
// time.
constexpr auto barInterval = 33ms;
constexpr auto blinkHalfPeriod = 500ms;
constexpr auto revealDelay = 20ms;
constexpr int appendDuration = 100;
constexpr int replaceDuration = 150;

QList<qreal> barHeightsAt(float audioLevel)
{
    QList<qreal> heights;
    for (int index = 0; index < int(weights.size()); ++index)
        heights << RecordingPillViewModel::waveHeight(index, audioLevel);
    return heights;
}

} // namespace

RecordingPillViewModel::RecordingPillViewModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    m_barHeights = barHeightsAt(appState.audioLevel());
    m_shownBarHeights = m_barHeights;
    m_barTimer.setInterval(barInterval);
    m_barTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_barTimer, &QTimer::timeout, this, &RecordingPillViewModel::moveBars);
    updateClock();
    // What was recognised before the pill existed is not revealed again.
    m_displayedText = appState.partialTranscript();

    m_blinkTimer.setInterval(blinkHalfPeriod);
    connect(&m_blinkTimer, &QTimer::timeout, this, [this] {
        m_cursorVisible = !m_cursorVisible;
        Q_EMIT cursorVisibleChanged();
    });
    connect(&appState, &AppState::transcriptionStateChanged, this, [this] {
        Q_EMIT stateChanged();
        Q_EMIT streamingLineChanged();
    });
    connect(&appState, &AppState::enableRealtimeStreamingChanged, this,
            &RecordingPillViewModel::streamingLineChanged);
    connect(&appState, &AppState::audioLevelChanged, this, &RecordingPillViewModel::updateBars);
    connect(&appState, &AppState::recordingDurationChanged, this,
            &RecordingPillViewModel::updateClock);
    connect(&appState, &AppState::partialTranscriptChanged, this,
            [this] { animateTextChange(m_appState.partialTranscript()); });
}

double RecordingPillViewModel::waveHeight(int index, float audioLevel)
{
    const double height = double(audioLevel) * gain * weights.at(size_t(index)) + minimumHeight;
    return std::max(std::min(height, maximumHeight), minimumHeight);
}

QString RecordingPillViewModel::formatDuration(double seconds)
{
    const auto whole = int64_t(seconds);
    return u"%1:%2"_s.arg(whole / 60, 2, 10, QLatin1Char('0'))
        .arg(whole % 60, 2, 10, QLatin1Char('0'));
}

void RecordingPillViewModel::setOnScreen(bool onScreen)
{
    if (onScreen == m_blinkTimer.isActive())
        return;
    if (onScreen)
        m_blinkTimer.start();
    else
        m_blinkTimer.stop();
}

QString RecordingPillViewModel::statusText() const
{
    return Velloro::statusText(m_appState.transcriptionState());
}

bool RecordingPillViewModel::hasStreamingLine() const
{
    const TranscriptionState state = m_appState.transcriptionState();
    return m_appState.enableRealtimeStreaming()
        && (state == TranscriptionState::listening || state == TranscriptionState::transcribing);
}

bool RecordingPillViewModel::hasCursor() const
{
    return m_appState.enableRealtimeStreaming()
        && (!m_displayedText.isEmpty()
            || m_appState.transcriptionState() == TranscriptionState::listening);
}

void RecordingPillViewModel::updateBars()
{
    const QList<qreal> heights = barHeightsAt(m_appState.audioLevel());
    if (heights == m_barHeights)
        return;
    m_barHeights = heights;
    m_formerBarHeights = m_shownBarHeights;
    m_barsMoving.start();
    if (!m_barTimer.isActive())
        m_barTimer.start();
    Q_EMIT barHeightsChanged();
}

void RecordingPillViewModel::moveBars()
{
    const double progress = std::min(double(m_barsMoving.elapsed()) / barDuration.count(), 1.0);
    const double eased = progress * (2 - progress);
    for (qsizetype index = 0; index < m_barHeights.size(); ++index) {
        const double from = m_formerBarHeights.at(index);
        m_shownBarHeights[index] = from + (m_barHeights.at(index) - from) * eased;
    }
    if (progress == 1)
        m_barTimer.stop();
    Q_EMIT shownBarHeightsChanged();
}

void RecordingPillViewModel::updateClock()
{
    // The duration moves 20 times a second, its text once.
    const QString text = formatDuration(m_appState.recordingDuration());
    if (text == m_clockText)
        return;
    m_clockText = text;
    Q_EMIT clockTextChanged();
}

void RecordingPillViewModel::animateTextChange(const QString &text)
{
    const int64_t displayedCount = Graphemes::count(m_displayedText);
    if (displayedCount >= Graphemes::count(text)
        || Graphemes::prefix(text, displayedCount) != m_displayedText) {
        setDisplayedText(text, replaceDuration);
        return;
    }
    // The appends are independent: neither each other nor a later change takes them back.
    auto delay = 0ms;
    for (QString rest = Graphemes::dropFirst(text, displayedCount); !rest.isEmpty();
         rest = Graphemes::dropFirst(rest, 1), delay += revealDelay) {
        QTimer::singleShot(delay, Qt::PreciseTimer, this,
                           [this, character = Graphemes::prefix(rest, 1)] {
                               setDisplayedText(m_displayedText + character, appendDuration);
                           });
    }
}

void RecordingPillViewModel::setDisplayedText(const QString &text, int revealDuration)
{
    if (text == m_displayedText)
        return;
    const bool wasEmpty = m_displayedText.isEmpty();
    m_displayedText = text;
    m_revealDuration = revealDuration;
    Q_EMIT displayedTextChanged();
    if (wasEmpty != text.isEmpty())
        Q_EMIT streamingLineChanged();
}

} // namespace Velloro
