#pragma once

#include "Core/Domain/EnumTable.h"

#include <QDateTime>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QUuid>
#include <optional>
#include <span>

namespace Velloro {

// In QML the enumerations are those of `Domain`.
Q_NAMESPACE

/// The phase of a dictation.
enum class TranscriptionState {
    idle,         ///< Nothing is recorded or processed; the only state in which one can start.
    listening,    ///< The microphone is recording.
    transcribing, ///< Recording has stopped; the audio is being transcribed and inserted.
    inserting,    ///< Text is being inserted into the target application.
};
Q_ENUM_NS(TranscriptionState)

/// The case's name, for log lines.
[[nodiscard]] QString caseName(TranscriptionState state);

/// How the hotkey drives recording. The raw value is shown, too.
enum class RecordingMode { holdToTalk, toggle };
Q_ENUM_NS(RecordingMode)

template <>
inline constexpr auto enumTable<RecordingMode> = std::to_array<EnumCase<RecordingMode>>({
    {RecordingMode::holdToTalk, u"Hold to Talk"},
    {RecordingMode::toggle, u"Toggle"},
});

/// The three models between which the user switches. The raw value is shown, too. The order of the
/// cases is significant: it decides which `WhisperModelType` a preset loads.
enum class ModelPreset { small, medium, large };
Q_ENUM_NS(ModelPreset)

template <>
inline constexpr auto enumTable<ModelPreset> = std::to_array<EnumCase<ModelPreset>>({
    {ModelPreset::small, u"Small"},
    {ModelPreset::medium, u"Medium"},
    {ModelPreset::large, u"Large"},
});

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
    auto_, ///< Automatic detection.
};
Q_ENUM_NS(WhisperLanguage)

template <>
inline constexpr auto enumTable<WhisperLanguage> = std::to_array<EnumCase<WhisperLanguage>>({
    {WhisperLanguage::english, u"en", u"English", u"Best accuracy"},
    {WhisperLanguage::polish, u"pl", u"Polish"},
    {WhisperLanguage::german, u"de", u"German"},
    {WhisperLanguage::spanish, u"es", u"Spanish"},
    {WhisperLanguage::french, u"fr", u"French"},
    {WhisperLanguage::italian, u"it", u"Italian"},
    {WhisperLanguage::portuguese, u"pt", u"Portuguese"},
    {WhisperLanguage::russian, u"ru", u"Russian"},
    {WhisperLanguage::japanese, u"ja", u"Japanese"},
    {WhisperLanguage::chinese, u"zh", u"Chinese"},
    {WhisperLanguage::auto_, u"auto", u"Auto-detect", u"May be slower"},
});

/// A short hint beside the language's name, where there is one.
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

    friend bool operator==(const TranscriptionHistoryItem &, const TranscriptionHistoryItem &)
        = default;
};

/// The history as a UTF-8 JSON array of objects with the keys "id", "text" and "timestamp" in this
/// order, and back; nothing when any part of it is not as expected.
[[nodiscard]] QByteArray encodeHistory(std::span<const TranscriptionHistoryItem> history);
[[nodiscard]] std::optional<QList<TranscriptionHistoryItem>> decodeHistory(const QByteArray &json);

} // namespace Velloro
