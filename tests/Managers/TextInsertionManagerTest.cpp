#include "Managers/TextInsertionManager.h"

#include "Base/StringLiterals.h"
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

const QStringList stroke{u"51 down 0"_s, u"51 up 0"_s, u"pause 5000"_s};

const QStringList pasteOf(const QString &text)
{
    return {u"borrow "_s + text, u"9 down 100000"_s, u"9 up 100000"_s};
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
        {u"Hello world"_s, {6, 5}, u"there"_s, u"Hello there"_s, 11},
        {u"Hello"_s, {5, 0}, u" you"_s, u"Hello you"_s, 9},
        {u""_s, {0, 0}, u"one"_s, u"one"_s, 3},
        {u"abc"_s, {0, 3}, u"x"_s, u"x"_s, 1},
        {u"abc"_s, {1, 100}, u"x"_s, u"ax"_s, 2},
        {u"abc"_s, {7, 2}, u"x"_s, u"abcx"_s, 8},
        {u"abc"_s, {1, most}, u"x"_s, u"ax"_s, 2},
        {u"abc"_s, {most, most}, u"x"_s, u"abcx"_s, std::nullopt},
        // A family, a flag and an accented letter are one character each.
        {u"a👨‍👩‍👧b🇵🇱c"_s, {2, 1}, u"x"_s, u"a👨‍👩‍👧x🇵🇱c"_s, 3},
        {u"a👨‍👩‍👧b🇵🇱c"_s,
         {3, 1},
         u"👍🏽!"_s,
         u"a👨‍👩‍👧b👍🏽!c"_s,
         5},
        {u"e\u0301e\u0301e"_s, {1, 1}, u"o\u0308"_s, u"e\u0301o\u0308e"_s, 2},
        {u"你好世界"_s, {2, 0}, u"，"_s, u"你好，世界"_s, 3},
        {u"one\r\ntwo"_s, {4, 3}, u"2"_s, u"one\r\n2"_s, 5},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.expected.toStdString());
        accessibility->writes.clear();
        const auto &field = accessibility->focusText(each.value, each.selected);
        EXPECT_TRUE(manager.insertText(each.text));
        EXPECT_EQ(field.value, each.expected);
        QStringList writes{u"set "_s + each.expected};
        if (each.caret)
            writes << u"select %1 0"_s.arg(*each.caret);
        EXPECT_EQ(accessibility->writes, writes);
    }
    EXPECT_THAT(memory.output, IsEmpty());
}

TEST_F(TextInsertionManagerTest, ACaretThatIsRefusedIsNoFailure)
{
    accessibility->focusText(u"Hello"_s, {5, 0}).refusesSelectedRange = true;
    EXPECT_TRUE(manager.insertText(u"!"_s));
    EXPECT_EQ(accessibility->focused->value, u"Hello!"_s);
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
            Element &field = accessibility->focusText(u"Hello"_s, {5, 0});
            obstacle(field);
            field.refusesSelectedText = refuses;
            EXPECT_TRUE(manager.insertText(u"!"_s));
            ASSERT_FALSE(accessibility->writes.empty());
            EXPECT_EQ(accessibility->writes.back(), u"insert !"_s);
            EXPECT_EQ(memory.output, refuses ? pasteOf(u"!"_s) : QStringList());
        }
    }
}

TEST_F(TextInsertionManagerTest, PastesWithoutTrustOrFocus)
{
    EXPECT_TRUE(manager.insertText(u"no focus"_s));
    EXPECT_EQ(memory.output, pasteOf(u"no focus"_s));

    memory.output.clear();
    accessibility->focusText(u"Hello"_s, {5, 0});
    accessibility->trusted = false;
    EXPECT_TRUE(manager.insertText(u"no trust"_s));
    EXPECT_EQ(memory.output, pasteOf(u"no trust"_s));
    EXPECT_THAT(accessibility->writes, IsEmpty());
}

TEST_F(TextInsertionManagerTest, AnEmptyTextTouchesNothing)
{
    accessibility->focusText(u"Hello"_s, {0, 5});
    EXPECT_FALSE(manager.insertText(QString()));
    EXPECT_THAT(accessibility->writes, IsEmpty());
    accessibility->trusted = false;
    EXPECT_FALSE(manager.insertText(u""_s));
    EXPECT_THAT(memory.output, IsEmpty());
}

TEST_F(TextInsertionManagerTest, KnowsWhetherItsTextArrivedAndStillHasTheFocus)
{
    for (const bool refuses : {false, true}) {
        SCOPED_TRACE(refuses ? "pasted" : "written");
        memory.workspace->window = 1;
        auto &field = accessibility->focusText(u"Hello"_s, {5, 0});
        const auto element = accessibility->focused;
        field.refusesValue = field.refusesSelectedText = refuses;
        memory.pasteboard->isFetched = accessibility->showsWrites = false;
        manager.insertText(u"!"_s);
        EXPECT_FALSE(manager.lastInsertionArrived());
        memory.pasteboard->isFetched = refuses;
        accessibility->showsWrites = !refuses;
        EXPECT_TRUE(manager.lastInsertionArrived());
        memory.pasteboard->isFetched = false;
        EXPECT_TRUE(manager.lastInsertionArrived()) << "a paste arrives once";

        EXPECT_TRUE(manager.isAtLastInsertion());
        accessibility->focusText(u"Hello!"_s, {6, 0});
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
    auto &field = accessibility->focusText(u"Hello"_s, {5, 0});
    manager.insertText(u"!"_s);
    field.refusesValue = field.refusesSelectedText = true;
    memory.pasteboard->isFetched = false;
    memory.pasteboard->isContested = true;
    EXPECT_TRUE(manager.insertText(u"?"_s));
    EXPECT_TRUE(manager.wasLastPasteRefused());
    EXPECT_EQ(memory.output, QStringList{u"borrow ?"_s});
    EXPECT_TRUE(manager.lastInsertionArrived()) << "the one before, which was written";
    accessibility->showsWrites = false;
    EXPECT_FALSE(manager.isAtLastInsertion());

    field.refusesValue = false;
    manager.insertText(u"?"_s);
    EXPECT_FALSE(manager.wasLastPasteRefused()) << "written";
}

TEST_F(TextInsertionManagerTest, DeletesNoPastedWordsAfterTheUserHasPressedSomething)
{
    manager.prepare();
    for (const bool refuses : {false, true}) {
        SCOPED_TRACE(refuses ? "pasted" : "written");
        auto &field = accessibility->focusText(u"Hello"_s, {5, 0});
        field.refusesValue = field.refusesSelectedText = refuses;
        memory.userInput->press();
        manager.insertText(u"!"_s);
        EXPECT_TRUE(manager.isAtLastInsertion());
        memory.userInput->press();
        // What is written shows where the caret is.
        EXPECT_EQ(manager.isAtLastInsertion(), !refuses);

        manager.insertText(u"!"_s);
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
    memory.pasteboard->content = u"mine"_s;
    manager.insertText(u"first"_s);
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(100));
    QElapsedTimer timer;
    timer.start();
    manager.insertText(u"second"_s);
    EXPECT_EQ(memory.pasteboard->content, u"second"_s);
    ASSERT_TRUE(waitUntil([&] { return memory.output.contains(u"give back"_s); },
                          std::chrono::milliseconds(1000)));
    EXPECT_GE(timer.elapsed(), 500);
    EXPECT_EQ(memory.pasteboard->content, u"mine"_s);
    EXPECT_EQ(memory.output.count(u"give back"_s), 1);
}

TEST_F(TextInsertionManagerTest, AnEndBeforeThatGivesTheUsersOwnTextBack)
{
    accessibility->trusted = false;
    memory.pasteboard->content = u"of the user"_s;
    {
        TextInsertionManager ending(memory.platform);
        ending.insertText(u"one"_s);
        ending.insertText(u"two"_s);
    }
    EXPECT_EQ(memory.pasteboard->content, u"of the user"_s);
}

TEST_F(TextInsertionManagerTest, LeavesAtTheUsersHandWhatNoStrokeCanPaste)
{
    memory.pasteboard->content = u"mine"_s;
    memory.keyboardEvents->refuses = true;
    EXPECT_TRUE(manager.insertText(u"text"_s));
    EXPECT_TRUE(manager.wasLastTextLeftToPaste());
    EXPECT_FALSE(manager.wasLastPasteRefused());
    // For good: it is not borrowed any more, and nothing is given back later.
    EXPECT_TRUE(memory.output.contains(u"write text"_s));
    EXPECT_FALSE(waitUntil([&] { return memory.output.contains(u"give back"_s); },
                           std::chrono::milliseconds(600)));
    EXPECT_EQ(memory.pasteboard->content, u"text"_s);

    memory.keyboardEvents->refuses = false;
    EXPECT_TRUE(manager.insertText(u"text"_s));
    EXPECT_FALSE(manager.wasLastTextLeftToPaste());
}

TEST_F(TextInsertionManagerTest, InsertsRemovablyOnlyWhatItCouldRemoveAgain)
{
    struct Case
    {
        const char *what;
        bool isWritten;
        bool isPressTold;
        bool isStrokeSent;
        bool isInserted;
    };
    const Case cases[] = {
        {"written", true, false, false, true},
        {"pasted", false, true, true, true},
        {"pasted, and the caret may be anywhere later", false, false, true, false},
        {"no stroke", false, true, false, false},
    };
    auto &field = accessibility->focusText(u"Hello"_s, {5, 0});
    for (const auto &[what, isWritten, isPressTold, isStrokeSent, isInserted] : cases) {
        SCOPED_TRACE(what);
        field.refusesValue = field.refusesSelectedText = !isWritten;
        memory.userInput->tells = isPressTold;
        memory.keyboardEvents->refuses = !isStrokeSent;
        memory.pasteboard->content = u"mine"_s;
        EXPECT_EQ(manager.insertRemovably(u"!"_s), isInserted);
        EXPECT_EQ(manager.isAtLastInsertion(), isInserted || isPressTold || isWritten);
        EXPECT_TRUE(waitUntil([&] { return memory.pasteboard->content == u"mine"_s; }))
            << "the words are not left there";
    }
}

TEST_F(TextInsertionManagerTest, WritesAwayWhatNoStrokesCanDelete)
{
    memory.keyboardEvents->refuses = true;
    auto &field = accessibility->focusText(u"mine  of old"_s, {5, 0});
    EXPECT_TRUE(manager.insertRemovably(u"one two"_s));
    manager.deleteBackwards(7);
    EXPECT_EQ(field.value, u"mine  of old"_s);
    EXPECT_EQ(field.selectedRange, (TextRange{5, 0}));
    EXPECT_TRUE(manager.insertText(u"End."_s));
    EXPECT_EQ(field.value, u"mine End. of old"_s);

    // What was pasted is left as it is, as is what the strokes would not have reached.
    field.refusesValue = field.refusesSelectedText = true;
    manager.deleteBackwards(7);
    EXPECT_EQ(field.value, u"mine End. of old"_s);
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
    manager.insertText(u"words"_s);
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
        InMemoryTextField field(memory, u"mine,  yours"_s, 6);
        manager.insertText(u"words"_s);
        field.takeKeysLate(*memory.keyboardEvents, pauses);
        memory.output.clear();
        manager.deleteBackwards(5);
        EXPECT_TRUE(manager.insertText(u"all"_s));
        EXPECT_EQ(memory.output.contains(u"borrow all"_s), pasted);
        EXPECT_LE(memory.output.filter(u"pause 10000"_s).size(), 30);
        field.takeKeys();
        EXPECT_EQ(field.text(), u"mine, all yours"_s);
        // The next has nothing to come after.
        memory.output.clear();
        manager.insertText(u"!"_s);
        EXPECT_EQ(field.text(), u"mine, all! yours"_s);
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
        {"another", false, [this](Element &) { accessibility->focusText(u"a"_s, {1, 0}); }},
        {"pasted", true, [](Element &) {}},
    };
    for (const auto &[what, refuses, afterStrokes] : changes) {
        SCOPED_TRACE(what);
        Element &field = accessibility->focusText(u"a"_s, {1, 0});
        field.refusesValue = field.refusesSelectedText = refuses;
        manager.insertText(u"b"_s);
        memory.output.clear();
        manager.deleteBackwards(1);
        afterStrokes(field);
        manager.insertText(u"x"_s);
        EXPECT_EQ(memory.output, stroke + pasteOf(u"x"_s));
    }
}

} // namespace
} // namespace Velloro
