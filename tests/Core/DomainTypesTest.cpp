#include "Core/Domain/DomainTypes.h"

#include "Base/StringLiterals.h"

#include <cmath>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

template <typename E>
QStringList allRawValues()
{
    QStringList values;
    for (const E each : allCases<E>()) {
        values << rawValue(each);
        EXPECT_EQ(fromRawValue<E>(rawValue(each)), each);
    }
    return values;
}

TEST(DomainTypes, haveTheirRawValuesInOrder)
{
    EXPECT_EQ(allRawValues<RecordingMode>(), QStringList({u"Hold to Talk"_s, u"Toggle"_s}));
    EXPECT_EQ(allRawValues<ModelPreset>(), QStringList({u"Small"_s, u"Medium"_s, u"Large"_s}));
    EXPECT_EQ(allRawValues<WhisperLanguage>().join(u' '), u"en pl de es fr it pt ru ja zh auto"_s);

    QStringList states;
    for (const TranscriptionState state :
         {TranscriptionState::idle, TranscriptionState::listening, TranscriptionState::transcribing,
          TranscriptionState::inserting})
        states << caseName(state);
    EXPECT_EQ(states.join(u' '), u"idle listening transcribing inserting"_s);
}

TEST(DomainTypes, acceptNoOtherRawValues)
{
    for (const QString &text : {u""_s, u"hold to talk"_s, u"Hold to  Talk"_s, u"Hold to Talk "_s,
                                u"toggle"_s, u"small"_s, u"EN"_s, u"Auto"_s, u"english"_s}) {
        EXPECT_FALSE(fromRawValue<RecordingMode>(text)) << text.toStdString();
        EXPECT_FALSE(fromRawValue<ModelPreset>(text)) << text.toStdString();
        EXPECT_FALSE(fromRawValue<WhisperLanguage>(text)) << text.toStdString();
    }
}

TEST(DomainTypes, languagesHaveNamesAndTwoOfThemHints)
{
    QStringList names;
    QStringList hints;
    for (const WhisperLanguage language : allCases<WhisperLanguage>()) {
        names << displayName(language);
        hints << hint(language).value_or(u"-"_s);
    }
    EXPECT_EQ(names.join(u' '),
              u"English Polish German Spanish French Italian Portuguese Russian "
              "Japanese Chinese Auto-detect"_s);
    EXPECT_EQ(hints.join(u' '), u"Best accuracy - - - - - - - - - May be slower"_s);
}

TEST(TranscriptionHistory, isWrittenInItsJsonForm)
{
    const TranscriptionHistoryItem item{
        QUuid::fromString(u"{a1b2c3d4-e5f6-4789-8abc-def012345678}"), u"a \"ü\"\n"_s,
        762861845.125};
    EXPECT_EQ(encodeHistory(std::span(&item, 1)).toStdString(),
              "[{\"id\":\"A1B2C3D4-E5F6-4789-8ABC-DEF012345678\",\"text\":\"a \\\"ü\\\"\\n\","
              "\"timestamp\":762861845.125}]");
    EXPECT_EQ(encodeHistory({}).toStdString(), "[]");
    EXPECT_EQ(item.dateTime().toUTC().toString(Qt::ISODateWithMs), u"2025-03-05T10:04:05.125Z"_s);
}

TEST(TranscriptionHistory, readsBackWhatWasWritten)
{
    QList<TranscriptionHistoryItem> history{TranscriptionHistoryItem::now(u"now"_s)};
    EXPECT_LE(std::abs(history[0].dateTime().msecsTo(QDateTime::currentDateTime())), 60'000);
    const QString texts[] = {u""_s, u"日本語 😀"_s, QString(QChar(0xD83D)), QString(QChar(0))};
    for (const QString &text : texts) {
        for (const double timestamp : {0.0, -1.5, 0.1 + 0.2, 762861845.1234567, 1e300, 5e-324})
            history.append({QUuid::createUuid(), text, timestamp});
    }
    const auto decoded = decodeHistory(encodeHistory(history));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, history);
    EXPECT_NE(history[0].id, TranscriptionHistoryItem::now(u"now"_s).id);
    // Such a time is wrong, but must do no harm.
    EXPECT_TRUE((TranscriptionHistoryItem{{}, {}, 1e300}.dateTime().isValid()));
}

TEST(TranscriptionHistory, isDecodedWholeOrNotAtAll)
{
    const QByteArray id = R"("id":"A1B2C3D4-E5F6-4789-8ABC-DEF012345678")";
    const QByteArray good = "{" + id + R"(,"text":"x","timestamp":1.5})";
    const auto decoded = decodeHistory("[" + good.toLower() + "]");
    ASSERT_TRUE(decoded) << "a UUID in lower case is one, too";
    EXPECT_EQ(decoded->front().timestamp, 1.5);
    EXPECT_TRUE(decodeHistory(R"([{"new":[],)" + good.mid(1) + "]")) << "keys of a later version";

    for (const QByteArray &bad : {
             QByteArray(R"({"text":"x","timestamp":1})"),
             "{" + id + R"(,"timestamp":1})",
             "{" + id + R"(,"text":"x"})",
             "{" + id + R"(,"text":"x","timestamp":"1"})",
             "{" + id + R"(,"text":null,"timestamp":1})",
             QByteArray(
                 R"({"id":"{A1B2C3D4-E5F6-4789-8ABC-DEF012345678}","text":"x","timestamp":1})"),
             QByteArray(R"({"id":"A1B2C3D4-E5F6-4789-8ABC-DEF01234567","text":"x","timestamp":1})"),
             QByteArray(R"({"id":"A1B2C3D4E5F647898ABCDEF012345678","text":"x","timestamp":1})"),
             QByteArray(R"({"id":"","text":"x","timestamp":1})"),
             QByteArray("1"),
             QByteArray("null"),
         }) {
        EXPECT_FALSE(decodeHistory("[" + good + "," + bad + "]")) << bad.toStdString();
    }
    for (const char *bad : {"", "{}", "null", "[", "[]x", "\xff"})
        EXPECT_FALSE(decodeHistory(bad)) << bad;
}

} // namespace
} // namespace Velloro
