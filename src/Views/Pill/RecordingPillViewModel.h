#pragma once

#include "Core/State/AppState.h"

#include <QElapsedTimer>
#include <QList>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// What the pill shows of the application's state. Main thread only.
class RecordingPillViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window's controller")
    Q_PROPERTY(Velloro::TranscriptionState state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY stateChanged)
    /// The heights of the five bars at the present level.
    Q_PROPERTY(QList<qreal> barHeights READ barHeights NOTIFY barHeightsChanged)
    /// The same on their way there, as they are to be shown.
    Q_PROPERTY(QList<qreal> shownBarHeights READ shownBarHeights NOTIFY shownBarHeightsChanged)
    /// The elapsed time, "mm:ss".
    Q_PROPERTY(QString clockText READ clockText NOTIFY clockTextChanged)
    Q_PROPERTY(bool hasStreamingLine READ hasStreamingLine NOTIFY streamingLineChanged)
    /// The streamed text as far as it is revealed.
    Q_PROPERTY(QString displayedText READ displayedText NOTIFY displayedTextChanged)
    /// Milliseconds that the latest change of `displayedText` takes to settle.
    Q_PROPERTY(int revealDuration READ revealDuration NOTIFY displayedTextChanged)
    Q_PROPERTY(bool hasCursor READ hasCursor NOTIFY streamingLineChanged)
    Q_PROPERTY(bool cursorVisible READ cursorVisible NOTIFY cursorVisibleChanged)

public:
    /// `appState` outlives the model.
    explicit RecordingPillViewModel(AppState &appState, QObject *parent = nullptr);

    /// The height of a bar (0 to 4) at a level of 0 to 1.
    [[nodiscard]] static double waveHeight(int index, float audioLevel);
    /// Whole seconds as "mm:ss"; minutes are not folded into hours.
    [[nodiscard]] static QString formatDuration(double seconds);

    /// Tells whether the pill is on the screen; the cursor blinks only then.
    void setOnScreen(bool onScreen);

    [[nodiscard]] TranscriptionState state() const { return m_appState.transcriptionState(); }
    [[nodiscard]] QString statusText() const;
    [[nodiscard]] const QList<qreal> &barHeights() const { return m_barHeights; }
    [[nodiscard]] const QList<qreal> &shownBarHeights() const { return m_shownBarHeights; }
    [[nodiscard]] const QString &clockText() const { return m_clockText; }
    [[nodiscard]] bool hasStreamingLine() const;
    [[nodiscard]] const QString &displayedText() const { return m_displayedText; }
    [[nodiscard]] int revealDuration() const { return m_revealDuration; }
    [[nodiscard]] bool hasCursor() const;
    [[nodiscard]] bool cursorVisible() const { return m_cursorVisible; }

Q_SIGNALS:
    void stateChanged();
    void barHeightsChanged();
    void shownBarHeightsChanged();
    void clockTextChanged();
    void streamingLineChanged();
    void displayedTextChanged();
    void cursorVisibleChanged();

private:
    void updateBars();
    void moveBars();
    void updateClock();
    void animateTextChange(const QString &text);
    void setDisplayedText(const QString &text, int revealDuration);

    AppState &m_appState;
    QList<qreal> m_barHeights;
    QList<qreal> m_shownBarHeights;
    /// Where the bars stood when the level last changed, and since when they move.
    QList<qreal> m_formerBarHeights;
    QElapsedTimer m_barsMoving;
    QTimer m_barTimer;
    QString m_clockText;
    QString m_displayedText;
    int m_revealDuration = 0;
    bool m_cursorVisible = true;
    QTimer m_blinkTimer;
};

} // namespace Velloro
