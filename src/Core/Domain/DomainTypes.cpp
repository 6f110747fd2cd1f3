#include "Core/Domain/DomainTypes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <cmath>

namespace Velloro {

namespace {

constexpr std::array recordingModes{RecordingMode::holdToTalk, RecordingMode::toggle};
constexpr std::array modelPresets{ModelPreset::small, ModelPreset::medium, ModelPreset::large};
constexpr std::array whisperLanguages{
    WhisperLanguage::english,    WhisperLanguage::polish,  WhisperLanguage::german,
    WhisperLanguage::spanish,    WhisperLanguage::french,  WhisperLanguage::italian,
    WhisperLanguage::portuguese, WhisperLanguage::russian, WhisperLanguage::japanese,
    WhisperLanguage::chinese,    WhisperLanguage::auto_,
};

/// Seconds from 1970-01-01 to 2001-01-01, both at 00:00:00 UTC.
constexpr qint64 epochOffset = 978'307'200;

const QString idKey = QStringLiteral("id");
const QString textKey = QStringLiteral("text");
const QString timestampKey = QStringLiteral("timestamp");

template <typename E>
std::optional<E> findRawValue(QStringView text)
{
    const auto cases = allCases<E>();
    const auto found = std::ranges::find_if(cases, [&](E each) { return rawValue(each) == text; });
    return found == cases.end() ? std::nullopt : std::optional(*found);
}

/// A UUID from its canonical form alone, in either letter case; `QUuid` itself takes more.
std::optional<QUuid> uuidFromCanonicalText(const QString &text)
{
    const QUuid id = QUuid::fromString(text);
    if (id.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    return id;
}

std::optional<TranscriptionHistoryItem> decodeItem(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    const QJsonValue id = object.value(idKey);
    const QJsonValue text = object.value(textKey);
    const QJsonValue timestamp = object.value(timestampKey);
    if (!id.isString() || !text.isString() || !timestamp.isDouble())
        return std::nullopt;
    const auto uuid = uuidFromCanonicalText(id.toString());
    if (!uuid)
        return std::nullopt;
    return TranscriptionHistoryItem{*uuid, text.toString(), timestamp.toDouble()};
}

} // namespace

QString caseName(TranscriptionState state)
{
    switch (state) {
    case TranscriptionState::idle:
        return QStringLiteral("idle");
    case TranscriptionState::listening:
        return QStringLiteral("listening");
    case TranscriptionState::transcribing:
        return QStringLiteral("transcribing");
    case TranscriptionState::inserting:
        return QStringLiteral("inserting");
    }
    Q_UNREACHABLE();
}

QString rawValue(RecordingMode mode)
{
    switch (mode) {
    case RecordingMode::holdToTalk:
        return QStringLiteral("Hold to Talk");
    case RecordingMode::toggle:
        return QStringLiteral("Toggle");
    }
    Q_UNREACHABLE();
}

QString rawValue(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QStringLiteral("Small");
    case ModelPreset::medium:
        return QStringLiteral("Medium");
    case ModelPreset::large:
        return QStringLiteral("Large");
    }
    Q_UNREACHABLE();
}

QString rawValue(WhisperLanguage language)
{
    switch (language) {
    case WhisperLanguage::english:
        return QStringLiteral("en");
    case WhisperLanguage::polish:
        return QStringLiteral("pl");
    case WhisperLanguage::german:
        return QStringLiteral("de");
    case WhisperLanguage::spanish:
        return QStringLiteral("es");
    case WhisperLanguage::french:
        return QStringLiteral("fr");
    case WhisperLanguage::italian:
        return QStringLiteral("it");
    case WhisperLanguage::portuguese:
        return QStringLiteral("pt");
    case WhisperLanguage::russian:
        return QStringLiteral("ru");
    case WhisperLanguage::japanese:
        return QStringLiteral("ja");
    case WhisperLanguage::chinese:
        return QStringLiteral("zh");
    case WhisperLanguage::auto_:
        return QStringLiteral("auto");
    }
    Q_UNREACHABLE();
}

template <>
std::span<const RecordingMode> allCases<RecordingMode>()
{
    return recordingModes;
}

template <>
std::span<const ModelPreset> allCases<ModelPreset>()
{
    return modelPresets;
}

template <>
std::span<const WhisperLanguage> allCases<WhisperLanguage>()
{
    return whisperLanguages;
}

template <>
std::optional<RecordingMode> fromRawValue<RecordingMode>(QStringView rawValue)
{
    return findRawValue<RecordingMode>(rawValue);
}

template <>
std::optional<ModelPreset> fromRawValue<ModelPreset>(QStringView rawValue)
{
    return findRawValue<ModelPreset>(rawValue);
}

template <>
std::optional<WhisperLanguage> fromRawValue<WhisperLanguage>(QStringView rawValue)
{
    return findRawValue<WhisperLanguage>(rawValue);
}

QString displayName(WhisperLanguage language)
{
    switch (language) {
    case WhisperLanguage::english:
        return QStringLiteral("English");
    case WhisperLanguage::polish:
        return QStringLiteral("Polish");
    case WhisperLanguage::german:
        return QStringLiteral("German");
    case WhisperLanguage::spanish:
        return QStringLiteral("Spanish");
    case WhisperLanguage::french:
        return QStringLiteral("French");
    case WhisperLanguage::italian:
        return QStringLiteral("Italian");
    case WhisperLanguage::portuguese:
        return QStringLiteral("Portuguese");
    case WhisperLanguage::russian:
        return QStringLiteral("Russian");
    case WhisperLanguage::japanese:
        return QStringLiteral("Japanese");
    case WhisperLanguage::chinese:
        return QStringLiteral("Chinese");
    case WhisperLanguage::auto_:
        return QStringLiteral("Auto-detect");
    }
    Q_UNREACHABLE();
}

std::optional<QString> hint(WhisperLanguage language)
{
    switch (language) {
    case WhisperLanguage::english:
        return QStringLiteral("Best accuracy");
    case WhisperLanguage::auto_:
        return QStringLiteral("May be slower");
    default:
        return std::nullopt;
    }
}

TranscriptionHistoryItem TranscriptionHistoryItem::now(const QString &text)
{
    const qint64 milliseconds = QDateTime::currentMSecsSinceEpoch();
    return {QUuid::createUuid(), text,
            static_cast<double>(milliseconds - epochOffset * 1000) / 1000};
}

QDateTime TranscriptionHistoryItem::dateTime() const
{
    // Far outside of what a QDateTime takes lies nothing that was ever recorded.
    const double milliseconds = std::clamp(timestamp * 1000, -1e15, 1e15);
    return QDateTime::fromMSecsSinceEpoch(std::llround(milliseconds) + epochOffset * 1000);
}

QByteArray encodeHistory(std::span<const TranscriptionHistoryItem> history)
{
    QJsonArray array;
    for (const TranscriptionHistoryItem &item : history) {
        // Objects are written in the alphabetical order of their keys, which is the order wanted.
        array.append(QJsonObject{{idKey, item.id.toString(QUuid::WithoutBraces).toUpper()},
                                 {textKey, item.text},
                                 {timestampKey, item.timestamp}});
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<TranscriptionHistoryItem>> decodeHistory(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    const QJsonArray array = document.array();
    QList<TranscriptionHistoryItem> history;
    history.reserve(array.size());
    for (const QJsonValue &value : array) {
        const auto item = decodeItem(value);
        if (!item)
            return std::nullopt;
        history.append(*item);
    }
    return history;
}

} // namespace Velloro
