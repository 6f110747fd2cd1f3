#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QUuid>
#include <optional>
#include <span>

namespace Velloro {

/// The phase of a dictation.
enum class TranscriptionState {
    idle,         ///< Nothing is recorded or processed; the only state in which one can start.
    listening,    ///< The microphone is recording.
    transcribing, ///< Recording has stopped; the audio is being transcribed and inserted.
    inserting,    ///< Text is being inserted into the target application.
};

/// How the hotkey drives recording. Raw values: "Hold to Talk", "Toggle".
enum class RecordingMode { holdToTalk, toggle };

/// The three models between which the user switches. Raw values: "Small", "Medium", "Large". The
/// order of the cases is significant: it decides which `WhisperModelType` a preset loads.
enum class ModelPreset { small, medium, large };

/// The language that is spoken. The raw value is the recogniser's language code, or "auto".
enum class WhisperLanguage {
    english,
    polish,
    german,
    spanish,
    french,
    italian,
    portuguese,
    russian,
    japanese,
    chinese,
    auto_, ///< Automatic detection ("auto").
};

/// The case's name as it stands in log lines.
[[nodiscard]] QString caseName(TranscriptionState state);

/// The text that is persisted and, for modes and presets, shown.
[[nodiscard]] QString rawValue(RecordingMode mode);
[[nodiscard]] QString rawValue(ModelPreset preset);
[[nodiscard]] QString rawValue(WhisperLanguage language);

/// The case with exactly this raw value (case-sensitive), or nothing. `E` is one of
/// `RecordingMode`, `ModelPreset` and `WhisperLanguage`.
template <typename E>
[[nodiscard]] std::optional<E> fromRawValue(QStringView rawValue);

/// All cases in declaration order.
template <typename E>
[[nodiscard]] std::span<const E> allCases();

/// The language's name as it is shown.
[[nodiscard]] QString displayName(WhisperLanguage language);
/// A short hint beside the name, where there is one.
[[nodiscard]] std::optional<QString> hint(WhisperLanguage language);

/// One entry of the transcription history.
struct TranscriptionHistoryItem
{
    QUuid id;
    /// The transcript, trimmed.
    QString text;
    /// When the entry was created, in seconds (with fraction) since 2001-01-01 00:00:00 UTC.
    double timestamp = 0;

    /// An entry made now, with a fresh random identity.
    [[nodiscard]] static TranscriptionHistoryItem now(const QString &text);
    [[nodiscard]] QDateTime dateTime() const;

    friend bool operator==(const TranscriptionHistoryItem &,
                           const TranscriptionHistoryItem &) = default;
};

/// The history as a UTF-8 JSON array of objects with the keys "id", "text" and "timestamp" in this
/// order, and back; nothing when any part of it is not as expected.
[[nodiscard]] QByteArray encodeHistory(std::span<const TranscriptionHistoryItem> history);
[[nodiscard]] std::optional<QList<TranscriptionHistoryItem>> decodeHistory(const QByteArray &json);

} // namespace Velloro
