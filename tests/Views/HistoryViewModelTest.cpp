#include "Views/Settings/History/HistoryViewModel.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class HistoryViewModelTest : public ::testing::Test
{
protected:
    [[nodiscard]] QVariant value(int row, HistoryViewModel::Role role) const
    {
        return model.data(model.index(row), role);
    }

    InMemoryPlatform memory;
    AppState appState{memory.platform};
    HistoryViewModel model{appState, *memory.pasteboard,
                           QLocale(QLocale::English, QLocale::UnitedStates)};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(HistoryViewModelTest, CopiesTheWholeTextAndSaysSoForASecondAndAHalf)
{
    const QString text = u"one\ntwo\nthree\nfour\nfive "_s + u"𝄞 word "_s.repeated(1500).trimmed();
    appState.addToHistory(text);
    EXPECT_LT(value(0, HistoryViewModel::PreviewRole).toString().size(), 1100);
    EXPECT_TRUE(text.startsWith(value(0, HistoryViewModel::PreviewRole).toString()));

    memory.pasteboard->content = u"before"_s;
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    QElapsedTimer clock;
    clock.start();
    model.copy(0);
    EXPECT_EQ(memory.pasteboard->content, text);
    EXPECT_TRUE(value(0, HistoryViewModel::CopiedRole).toBool());
    // A dictation that ends meanwhile moves the entry, not the mark.
    appState.addToHistory(u"newer"_s);
    EXPECT_FALSE(value(0, HistoryViewModel::CopiedRole).toBool());
    EXPECT_TRUE(value(1, HistoryViewModel::CopiedRole).toBool());
    changes.clear();
    ASSERT_TRUE(changes.wait());
    EXPECT_GE(clock.elapsed(), 1490);
    EXPECT_FALSE(value(1, HistoryViewModel::CopiedRole).toBool());
}

TEST_F(HistoryViewModelTest, NewEntriesComeAtTheTopAndTheOldestGo)
{
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    for (int number = 0; number < 52; ++number)
        appState.addToHistory(u"text %1"_s.arg(number));
    EXPECT_EQ(model.rowCount(), 50);
    EXPECT_EQ(value(0, HistoryViewModel::PreviewRole), u"text 51"_s);
    EXPECT_EQ(value(49, HistoryViewModel::PreviewRole), u"text 2"_s);
    EXPECT_LE(resets.count(), 1) << "the list keeps its place";
    model.clear();
    EXPECT_TRUE(model.isEmpty());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_TRUE(appState.transcriptionHistory().isEmpty());
    model.clear();
    model.copy(0);
    EXPECT_FALSE(memory.pasteboard->content);
}

TEST_F(HistoryViewModelTest, ShowsTheTimeOfDayAsTheUserWritesIt)
{
    const QDateTime moment(QDate(2024, 3, 15), QTime(15, 45, 12));
    const TranscriptionHistoryItem item{
        QUuid::createUuid(), u"text"_s,
        double(QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).secsTo(moment))};
    memory.userDefaults->setValue(u"velloro.transcriptionHistory"_s,
                                  encodeHistory(std::span(&item, 1)));
    AppState stored(memory.platform);
    ASSERT_EQ(stored.transcriptionHistory().size(), 1);
    const std::pair<QLocale, const char16_t *> cases[]
        = {{QLocale(QLocale::English, QLocale::UnitedStates), u"3:45 PM"},
           {QLocale(QLocale::German, QLocale::Germany), u"15:45"}};
    for (const auto &[locale, text] : cases) {
        HistoryViewModel history(stored, *memory.pasteboard, locale);
        EXPECT_EQ(
            history.data(history.index(0), HistoryViewModel::TimeRole).toString().simplified(),
            QString::fromUtf16(text));
    }
}

} // namespace
} // namespace Velloro
