#include "Managers/TextInsertionManager.h"

#include "Support/InMemoryPlatform.h"
#include "Support/InMemoryTextField.h"
#include "Support/WaitUntil.h"

#include <QElapsedTimer>
#include <gmock/gmock.h>
#include <limits>

namespace Velloro {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t most = std::numeric_limits<int64_t>::max();

const QStringList stroke{u"51 down 0"_qs, u"51 up 0"_qs, u"pause 5000"_qs};

const QStringList pasteOf(const QString &text)
{
    return {u"borrow "_qs + text, u"9 down 100000"_qs, u"9 up 100000"_qs};
}

class TextInsertionManagerTest : public testing::Test
{
protected:
    InMemoryPlatform memory;
    InMemoryAccessibility *accessibility = memory.accessibility;
    TextInsertionManager manager{memory.platform};
};

TEST_F(TextInsertionManagerTest, ReplacesTheSelectionWithinTheValue)
{
    struct Case
    {
        QString value;
        TextRange selected;
        QString text;
        QString expected;
        std::optional<int64_t> caret;
    };
    const Case cases[] = {
        {u"Hello world"_qs, {6, 5}, u"there"_qs, u"Hello there"_qs, 11},
        {u"Hello"_qs, {5, 0}, u" you"_qs, u"Hello you"_qs, 9},
        {u""_qs, {0, 0}, u"one"_qs, u"one"_qs, 3},
        {u"abc"_qs, {0, 3}, u"x"_qs, u"x"_qs, 1},
        {u"abc"_qs, {1, 100}, u"x"_qs, u"ax"_qs, 2},
        {u"abc"_qs, {7, 2}, u"x"_qs, u"abcx"_qs, 8},
        {u"abc"_qs, {1, most}, u"x"_qs, u"ax"_qs, 2},
        {u"abc"_qs, {most, most}, u"x"_qs, u"abcx"_qs, std::nullopt},
        // A family, a flag and an accented letter are one character each.
        {u"a👨‍👩‍👧b🇵🇱c"_qs, {2, 1}, u"x"_qs, u"a👨‍👩‍👧x🇵🇱c"_qs, 3},
        {u"a👨‍👩‍👧b🇵🇱c"_qs, {3, 1}, u"👍🏽!"_qs, u"a👨‍👩‍👧b👍🏽!c"_qs, 5},
        {u"e\u0301e\u0301e"_qs, {1, 1}, u"o\u0308"_qs, u"e\u0301o\u0308e"_qs, 2},
        {u"你好世界"_qs, {2, 0}, u"，"_qs, u"你好，世界"_qs, 3},
        {u"one\r\ntwo"_qs, {4, 3}, u"2"_qs, u"one\r\n2"_qs, 5},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.expected.toStdString());
        accessibility->writes.clear();
        const auto &field = accessibility->focusText(each.value, each.selected);
        EXPECT_TRUE(manager.insertText(each.text));
        EXPECT_EQ(field.value, each.expected);
        QStringList writes{u"set "_qs + each.expected};
        if (each.caret)
            writes << u"select %1 0"_qs.arg(*each.caret);
        EXPECT_EQ(accessibility->writes, writes);
    }
    EXPECT_THAT(memory.output, IsEmpty());
}

TEST_F(TextInsertionManagerTest, ACaretThatIsRefusedIsNoFailure)
{
    accessibility->focusText(u"Hello"_qs, {5, 0}).refusesSelectedRange = true;
    EXPECT_TRUE(manager.insertText(u"!"_qs));
    EXPECT_EQ(accessibility->focused->value, u"Hello!"_qs);
    EXPECT_THAT(memory.output, IsEmpty());
}

TEST_F(TextInsertionManagerTest, FallsBackToTheSelectedTextAndThenToThePasteboard)
{
    using Element = InMemoryAccessibility::Element;
    const std::pair<const char *, std::function<void(Element &)>> obstacles[] = {
        {"no value", [](Element &field) { field.value.reset(); }},
        {"no range", [](Element &field) { field.selectedRange.reset(); }},
        {"negative location", [](Element &field) { field.selectedRange = TextRange{-1, 0}; }},
        {"negative length", [](Element &field) { field.selectedRange = TextRange{2, -1}; }},
        {"value refused", [](Element &field) { field.refusesValue = true; }},
    };
    for (const auto &[name, obstacle] : obstacles) {
        for (const bool refuses : {false, true}) {
            SCOPED_TRACE(testing::Message() << name << (refuses ? ", all refused" : ""));
            memory.output.clear();
            accessibility->writes.clear();
            Element &field = accessibility->focusText(u"Hello"_qs, {5, 0});
            obstacle(field);
            field.refusesSelectedText = refuses;
            EXPECT_TRUE(manager.insertText(u"!"_qs));
            ASSERT_FALSE(accessibility->writes.empty());
            EXPECT_EQ(accessibility->writes.back(), u"insert !"_qs);
            EXPECT_EQ(memory.output, refuses ? pasteOf(u"!"_qs) : QStringList());
        }
    }
}

TEST_F(TextInsertionManagerTest, PastesWithoutTrustOrFocus)
{
    EXPECT_TRUE(manager.insertText(u"no focus"_qs));
    EXPECT_EQ(memory.output, pasteOf(u"no focus"_qs));

    memory.output.clear();
    accessibility->focusText(u"Hello"_qs, {5, 0});
    accessibility->trusted = false;
    EXPECT_TRUE(manager.insertText(u"no trust"_qs));
    EXPECT_EQ(memory.output, pasteOf(u"no trust"_qs));
    EXPECT_THAT(accessibility->writes, IsEmpty());
}

TEST_F(TextInsertionManagerTest, AnEmptyTextTouchesNothing)
{
    accessibility->focusText(u"Hello"_qs, {0, 5});
    EXPECT_FALSE(manager.insertText(QString()));
    EXPECT_THAT(accessibility->writes, IsEmpty());
    accessibility->trusted = false;
    EXPECT_FALSE(manager.insertText(u""_qs));
    EXPECT_THAT(memory.output, IsEmpty());
}

TEST_F(TextInsertionManagerTest, KnowsWhetherItsTextArrivedAndStillHasTheFocus)
{
    for (const bool refuses : {false, true}) {
        SCOPED_TRACE(refuses ? "pasted" : "written");
        memory.workspace->window = 1;
        auto &field = accessibility->focusText(u"Hello"_qs, {5, 0});
        const auto element = accessibility->focused;
        field.refusesValue = field.refusesSelectedText = refuses;
        memory.pasteboard->isFetched = accessibility->showsWrites = false;
        manager.insertText(u"!"_qs);
        EXPECT_FALSE(manager.lastInsertionArrived());
        memory.pasteboard->isFetched = refuses;
        accessibility->showsWrites = !refuses;
        EXPECT_TRUE(manager.lastInsertionArrived());
        memory.pasteboard->isFetched = false;
        EXPECT_TRUE(manager.lastInsertionArrived()) << "a paste arrives once";

        EXPECT_TRUE(manager.isAtLastInsertion());
        accessibility->focusText(u"Hello!"_qs, {6, 0});
        EXPECT_FALSE(manager.isAtLastInsertion()) << "another element";
        accessibility->focused = element;
        memory.workspace->window = 2;
        EXPECT_FALSE(manager.isAtLastInsertion()) << "another window";
        // What is not known is no other.
        memory.workspace->window.reset();
        EXPECT_TRUE(manager.isAtLastInsertion());
        accessibility->focused.reset();
        EXPECT_TRUE(manager.isAtLastInsertion());
    }
}

TEST_F(TextInsertionManagerTest, APasteThatIsRefusedIsNoInsertion)
{
    auto &field = accessibility->focusText(u"Hello"_qs, {5, 0});
    manager.insertText(u"!"_qs);
    field.refusesValue = field.refusesSelectedText = true;
    memory.pasteboard->isFetched = false;
    memory.pasteboard->isContested = true;
    EXPECT_TRUE(manager.insertText(u"?"_qs));
    EXPECT_TRUE(manager.wasLastPasteRefused());
    EXPECT_EQ(memory.output, QStringList{u"borrow ?"_qs});
    EXPECT_TRUE(manager.lastInsertionArrived()) << "the one before, which was written";
    accessibility->showsWrites = false;
    EXPECT_FALSE(manager.isAtLastInsertion());

    field.refusesValue = false;
    manager.insertText(u"?"_qs);
    EXPECT_FALSE(manager.wasLastPasteRefused()) << "written";
}

TEST_F(TextInsertionManagerTest, DeletesNoPastedWordsAfterTheUserHasPressedSomething)
{
    manager.prepare();
    for (const bool refuses : {false, true}) {
        SCOPED_TRACE(refuses ? "pasted" : "written");
        auto &field = accessibility->focusText(u"Hello"_qs, {5, 0});
        field.refusesValue = field.refusesSelectedText = refuses;
        memory.userInput->press();
        manager.insertText(u"!"_qs);
        EXPECT_TRUE(manager.isAtLastInsertion());
        memory.userInput->press();
        // What is written shows where the caret is.
        EXPECT_EQ(manager.isAtLastInsertion(), !refuses);

        manager.insertText(u"!"_qs);
        memory.output.clear();
        memory.keyboardEvents->paused = [this] { memory.userInput->press(); };
        manager.deleteBackwards(2);
        EXPECT_EQ(memory.output, refuses ? stroke : stroke + stroke);
        memory.keyboardEvents->paused = nullptr;
    }
    manager.finish();
    const uint64_t before = memory.userInput->presses();
    memory.userInput->press();
    EXPECT_EQ(memory.userInput->presses(), before) << "nobody counts any more";
}

TEST_F(TextInsertionManagerTest, GivesThePasteboardBackHalfASecondAfterTheLastPaste)
{
    memory.pasteboard->content = u"mine"_qs;
    manager.insertText(u"first"_qs);
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(100));
    QElapsedTimer timer;
    timer.start();
    manager.insertText(u"second"_qs);
    EXPECT_EQ(memory.pasteboard->content, u"second"_qs);
    ASSERT_TRUE(waitUntil([&] { return memory.output.contains(u"give back"_qs); },
                          std::chrono::milliseconds(1000)));
    EXPECT_GE(timer.elapsed(), 500);
    EXPECT_EQ(memory.pasteboard->content, u"mine"_qs);
    EXPECT_EQ(memory.output.count(u"give back"_qs), 1);
}

TEST_F(TextInsertionManagerTest, AnEndBeforeThatGivesTheUsersOwnTextBack)
{
    accessibility->trusted = false;
    memory.pasteboard->content = u"of the user"_qs;
    {
        TextInsertionManager ending(memory.platform);
        ending.insertText(u"one"_qs);
        ending.insertText(u"two"_qs);
    }
    EXPECT_EQ(memory.pasteboard->content, u"of the user"_qs);
}

TEST_F(TextInsertionManagerTest, KeysThatCannotBeMadeAreSkipped)
{
    memory.keyboardEvents->refuses = true;
    EXPECT_TRUE(manager.insertText(u"text"_qs));
    EXPECT_EQ(memory.pasteboard->content, u"text"_qs);
    memory.output.clear();
    manager.deleteBackwards(2);
    EXPECT_THAT(memory.output, ElementsAre(u"pause 5000"_qs, u"pause 5000"_qs));
}

TEST_F(TextInsertionManagerTest, DeletesBackwardsByPacedStrokesWithoutModifiers)
{
    manager.deleteBackwards(0);
    manager.deleteBackwards(-3);
    manager.deleteBackwards(std::numeric_limits<int64_t>::min());
    EXPECT_THAT(memory.output, IsEmpty());

    manager.deleteBackwards(3);
    EXPECT_EQ(memory.output, stroke + stroke + stroke);
}

TEST_F(TextInsertionManagerTest, SendsNoBackspaceToAnotherWindow)
{
    memory.workspace->window = 1;
    manager.insertText(u"words"_qs);
    memory.output.clear();
    int pauses = 0;
    memory.keyboardEvents->paused = [&] {
        if (++pauses == 2)
            memory.workspace->window = 2;
    };
    manager.deleteBackwards(5);
    EXPECT_EQ(memory.output, stroke + stroke);
}

TEST_F(TextInsertionManagerTest, WhatIsInsertedAfterBackspacesComesAfterThem)
{
    struct Case
    {
        const char *what;
        int pauses;
        bool pasted;
    };
    // There is a pause after each stroke; further ones wait for what the strokes do.
    for (const auto &[what, pauses, pasted] :
         {Case{"taken at once", 5, false}, Case{"taken late", 20, false},
          Case{"not seen in time", 1000, true}}) {
        SCOPED_TRACE(what);
        InMemoryTextField field(memory, u"mine,  yours"_qs, 6);
        manager.insertText(u"words"_qs);
        field.takeKeysLate(*memory.keyboardEvents, pauses);
        memory.output.clear();
        manager.deleteBackwards(5);
        EXPECT_TRUE(manager.insertText(u"all"_qs));
        EXPECT_EQ(memory.output.contains(u"borrow all"_qs), pasted);
        EXPECT_LE(memory.output.filter(u"pause 10000"_qs).size(), 30);
        field.takeKeys();
        EXPECT_EQ(field.text(), u"mine, all yours"_qs);
        // The next has nothing to come after.
        memory.output.clear();
        manager.insertText(u"!"_qs);
        EXPECT_EQ(field.text(), u"mine, all! yours"_qs);
        EXPECT_THAT(memory.output, IsEmpty());
        memory.keyboardEvents->paused = nullptr;
        memory.keyboardEvents->receiver = nullptr;
    }
    // Neither a text that can't be read shows it, nor another than the strokes went to, and where
    // the words were pasted nothing has to.
    using Element = InMemoryAccessibility::Element;
    struct Change
    {
        const char *what;
        bool refuses;
        std::function<void(Element &)> afterStrokes;
    };
    const Change changes[] = {
        {"unreadable", false, [](Element &field) { field.value.reset(); }},
        {"another", false, [this](Element &) { accessibility->focusText(u"a"_qs, {1, 0}); }},
        {"pasted", true, [](Element &) {}},
    };
    for (const auto &[what, refuses, afterStrokes] : changes) {
        SCOPED_TRACE(what);
        Element &field = accessibility->focusText(u"a"_qs, {1, 0});
        field.refusesValue = field.refusesSelectedText = refuses;
        manager.insertText(u"b"_qs);
        memory.output.clear();
        manager.deleteBackwards(1);
        afterStrokes(field);
        manager.insertText(u"x"_qs);
        EXPECT_EQ(memory.output, stroke + pasteOf(u"x"_qs));
    }
}

} // namespace
} // namespace Velloro
