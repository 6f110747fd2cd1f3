#include "Core/Domain/DomainTypes.h"

#include "Base/StringLiterals.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaEnum>
#include <algorithm>
#include <cmath>

namespace Velloro {

namespace {

/// Seconds from 1970-01-01 to 2001-01-01, both at 00:00:00 UTC.
constexpr qint64 epochOffset = 978'307'200;

const QString idKey = u"id"_s;
const QString textKey = u"text"_s;
const QString timestampKey = u"timestamp"_s;

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
    return QString::fromLatin1(
        QMetaEnum::fromType<TranscriptionState>().valueToKey(static_cast<int>(state)));
}

std::optional<QString> hint(WhisperLanguage language)
{
    const QStringView remark = enumCase(language).remark;
    return remark.isEmpty() ? std::nullopt : std::optional(remark.toString());
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
