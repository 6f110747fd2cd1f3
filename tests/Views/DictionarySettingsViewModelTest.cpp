#include "Views/Settings/Dictionary/DictionarySettingsViewModel.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class DictionarySettingsViewModelTest : public ::testing::Test
{
protected:
    void type(const QString &word)
    {
        model.setNewWord(word);
        model.addWord();
    }
    [[nodiscard]] QStringList rows() const
    {
        QStringList words;
        for (int row = 0; row < model.rowCount(); ++row)
            words << model.data(model.index(row), DictionarySettingsViewModel::WordRole).toString();
        return words;
    }

    InMemoryPlatform memory;
    AppState appState{memory.platform};
    DictionarySettingsViewModel model{appState};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(DictionarySettingsViewModelTest, TakesWordsWithoutTheBlanksAroundThemOnce)
{
    const struct
    {
        const char16_t *typed;
        const char16_t *left;
        QStringList words;
    } cases[] = {
        {u"  Kubernetes\t", u"", {u"Kubernetes"_s}},
        {u"Kubernetes ", u"Kubernetes ", {u"Kubernetes"_s}},
        {u"kubernetes", u"", {u"Kubernetes"_s, u"kubernetes"_s}},
        {u" \u00a0\u3000\t", u" \u00a0\u3000\t", {u"Kubernetes"_s, u"kubernetes"_s}},
        {u"", u"", {u"Kubernetes"_s, u"kubernetes"_s}},
        {u"\u2003New York\u2003", u"", {u"Kubernetes"_s, u"kubernetes"_s, u"New York"_s}},
        {u"x\n", u"", {u"Kubernetes"_s, u"kubernetes"_s, u"New York"_s, u"x\n"_s}},
    };
    EXPECT_EQ(model.title(), u"Your Dictionary (0 words)");
    for (const auto &[typed, left, words] : cases) {
        type(QString::fromUtf16(typed));
        EXPECT_EQ(model.newWord(), QString::fromUtf16(left));
        EXPECT_EQ(rows(), words);
        EXPECT_EQ(model.title(), u"Your Dictionary (%1 words)"_s.arg(words.size()));
        EXPECT_EQ(memory.userDefaults->get<QStringList>(u"velloro.customDictionary"_s)
                      .value_or(QStringList()),
                  words);
    }
    model.setNewWord(u" \t"_s);
    EXPECT_FALSE(model.canAdd());
    model.setNewWord(u" a"_s);
    EXPECT_TRUE(model.canAdd());
}

TEST_F(DictionarySettingsViewModelTest, RefusesWhatIsTooLongForAWordAndSaysSo)
{
    const QString longest = u"👩‍👩‍👧"_s.repeated(100);
    type(u" %1 "_s.arg(longest));
    EXPECT_EQ(rows(), QStringList({longest}));
    EXPECT_EQ(model.problem(), QString());

    model.setNewWord(longest + u"a"_s);
    EXPECT_FALSE(model.canAdd());
    EXPECT_EQ(model.problem(), u"A word can have 100 characters at most.");
    model.addWord();
    model.quickAdd(model.newWord());
    EXPECT_EQ(rows(), QStringList({longest}));
    EXPECT_EQ(model.newWord(), longest + u"a"_s);
}

TEST_F(DictionarySettingsViewModelTest, SuggestionsAreOnOfferUntilTheyAreThere)
{
    model.quickAdd(u"GPT-4"_s);
    model.quickAdd(u"GPT-4"_s);
    type(u"Claude"_s);
    type(u"openai"_s);
    EXPECT_EQ(rows(), QStringList({u"GPT-4"_s, u"Claude"_s, u"openai"_s}));
    EXPECT_EQ(model.suggestionsAvailable(), QList<bool>({true, false, true, false, true}));
    model.removeWord(u"GPT-4"_s);
    EXPECT_EQ(model.suggestionsAvailable(), QList<bool>({true, true, true, false, true}));
}

TEST_F(DictionarySettingsViewModelTest, RemovesEveryEqualEntryAndFollowsChangesMadeElsewhere)
{
    appState.setCustomDictionary({u"a"_s, u"b"_s, u"a"_s, u"c"_s});
    EXPECT_EQ(rows(), appState.customDictionary());
    model.removeWord(u"a"_s);
    EXPECT_EQ(rows(), QStringList({u"b"_s, u"c"_s}));

    // The rest of the list stays where it is.
    QStringList many;
    for (int number = 0; number < 10'000; ++number)
        many << u"word %1"_s.arg(number);
    appState.setCustomDictionary(many);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
    model.removeWord(u"word 5000"_s);
    ASSERT_EQ(removals.count(), 1);
    EXPECT_EQ(removals[0][1].toInt(), 5000);
    EXPECT_EQ(removals[0][2].toInt(), 5000);
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(model.rowCount(), 9999);
    appState.setCustomDictionary({});
    EXPECT_TRUE(model.isEmpty());
}

} // namespace
} // namespace Velloro
