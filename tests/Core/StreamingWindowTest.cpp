#include "Core/Recognition/StreamingWindow.h"

#include <gmock/gmock.h>

namespace Velloro {
namespace {

using ::testing::ElementsAre;

void append(StreamingWindow &window, size_t count, float value = 0.0F)
{
    window.append(std::vector<float>(count, value));
}

TEST(StreamingWindowTest, APassIsDueWithEvery24000NewSamples)
{
    StreamingWindow window;
    for (const bool isDue : {false, false, true}) {
        append(window, 8000);
        EXPECT_EQ(window.isPassDue(), isDue);
    }
    // Until a pass has been made.
    append(window, 10);
    EXPECT_TRUE(window.isPassDue());
    window.markProcessed();
    EXPECT_FALSE(window.isPassDue());
    append(window, 23'999);
    EXPECT_FALSE(window.isPassDue());
    append(window, 1);
    EXPECT_TRUE(window.isPassDue());
}

TEST(StreamingWindowTest, APassHearsTheLastFifteenSeconds)
{
    const struct
    {
        size_t processed;
        size_t added;
        size_t heard;
        double startTime;
        double endTime;
        bool isDue;
    } cases[] = {
        {.processed = 0,
         .added = 24'000,
         .heard = 24'000,
         .startTime = 0,
         .endTime = 1.5,
         .isDue = true},
        {220'000, 20'000, 240'000, 0, 15, false},
        // What was processed moves with the window, or is gone with what was in front of it.
        {220'000, 30'000, 240'000, 0.625, 15.625, true},
        {230'000, 20'000, 240'000, 0.625, 15.625, false},
        {4000, 246'000, 240'000, 0.625, 15.625, true},
        {24'000, 1'000'000, 240'000, 49, 64, true},
    };
    for (const auto &[processed, added, heard, startTime, endTime, isDue] : cases) {
        SCOPED_TRACE(processed + added);
        StreamingWindow window;
        append(window, processed, 1.0F);
        window.markProcessed();
        append(window, added, 2.0F);
        window.trim();

        ASSERT_EQ(window.samples().size(), heard);
        const auto fresh = static_cast<qsizetype>(std::min(added, heard));
        EXPECT_EQ(std::count(window.samples().end() - fresh, window.samples().end(), 2.0F), fresh);
        EXPECT_EQ(std::count(window.samples().begin(), window.samples().end(), 2.0F), fresh);
        EXPECT_DOUBLE_EQ(window.startTime(), startTime);
        EXPECT_DOUBLE_EQ(window.endTime(), endTime);
        EXPECT_EQ(window.isPassDue(), isDue);
    }
}

TEST(StreamingWindowTest, WithoutAPassItHoldsNoMoreThanTwo)
{
    StreamingWindow window;
    for (int chunk = 1; chunk <= 1000; ++chunk) {
        append(window, 8000, static_cast<float>(chunk));
        ASSERT_LE(window.samples().size(), 480'000U);
        ASSERT_DOUBLE_EQ(window.endTime(), chunk * 0.5);
    }
    window.trim();
    EXPECT_EQ(window.samples().front(), 971.0F);
    EXPECT_EQ(window.samples().back(), 1000.0F);
    EXPECT_TRUE(window.isPassDue());
    window.markProcessed();
    EXPECT_FALSE(window.isPassDue());
}

TEST(StreamingWindowTest, WhatAnotherHeldBackIsAppendedAsIfItHadComeAtOnce)
{
    StreamingWindow window;
    append(window, 2, 1.0F);
    StreamingWindow next;
    append(next, 1, 2.0F);
    append(next, 1, 3.0F);
    window.append(next);
    EXPECT_THAT(window.samples(), ElementsAre(1.0F, 1.0F, 2.0F, 3.0F));

    // Of so many the first are gone, and with them all that was before.
    StreamingWindow longer;
    append(longer, 1'000'000, 4.0F);
    window.append(longer);
    EXPECT_EQ(window.samples(), std::vector<float>(240'000, 4.0F));
    EXPECT_DOUBLE_EQ(window.endTime(), 1'000'004 / 16'000.0);
    EXPECT_TRUE(window.isPassDue());
}

} // namespace
} // namespace Velloro
