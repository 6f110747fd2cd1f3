#include "Base/StringLiterals.h"
#include "Platform/AtSpiTestBase.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"

#include <QJsonObject>

namespace Velloro {
namespace {

const QJsonArray focusedField{u"focused"_s, u"showing"_s, u"editable"_s};
const QJsonArray claiming{u"focused"_s, u"showing"_s};

/// An object of tests/Platform/scripted-application.
QJsonObject object(int role, const QJsonArray &states, const QJsonArray &children = {})
{
    return {{u"role"_s, role}, {u"states"_s, states}, {u"children"_s, children}};
}

class AtSpiScriptedTest : public AtSpiTest
{
protected:
    void SetUp() override
    {
        AtSpiTest::SetUp();
        if (IsSkipped())
            return;
        connect();
        application = std::make_unique<CommandedApplication>(u"scripted-application"_s);
        if (!application->command({u"toolkit"_s, u"gtk"_s}).toBool())
            GTEST_SKIP() << "the Python module of GLib is not installed";
    }

    void make(const QString &name, const QJsonObject &object)
    {
        application->command({u"object"_s, name, object});
    }
    /// The window becomes active; nothing is said of its focus.
    void activate(const QJsonArray &children, bool tellsAll = false)
    {
        QJsonObject window
            = object(AtSpiRole::frame, {u"active"_s, u"showing"_s, u"focused"_s}, children);
        window[u"collection"_s] = tellsAll;
        make(u"window"_s, window);
        application->command({u"window"_s, u"window"_s, u"Activate"_s});
    }
    void announce(const QString &name) { application->command({u"focus"_s, name, 1}); }

    /// A field with the focus, and what is selected in it.
    void makeField(const QString &text, int start, int end)
    {
        QJsonObject field = object(AtSpiRole::text, focusedField);
        field[u"text"_s] = text;
        field[u"selection"_s] = QJsonArray{start, end};
        make(u"field"_s, field);
        activate({u"field"_s});
        announce(u"field"_s);
        ASSERT_TRUE(waitForRole(Role::textField));
    }

    std::unique_ptr<CommandedApplication> application;
};

TEST_F(AtSpiScriptedTest, BelievesNoClaimToHaveWritten)
{
    struct Case
    {
        const char *what;
        QString toolkit;
        QString manner;
        QString text;
        int start;
        int end;
        bool pasted;
        QString expected;
        int insertions;
        bool seenAtOnce;
    };
    const Case cases[] = {
        {"done", u"gtk"_s, u"obedient"_s, u"Hi you"_s, 3, 6, false, u"Hi all"_s, 1, true},
        {"a toolkit that only claims it", u"Gecko"_s, u"idle"_s, u"Hi "_s, 3, 3, true, u"Hi "_s, 0,
         false},
        {"not done", u"gtk"_s, u"idle"_s, u"Hi "_s, 3, 3, true, u"Hi "_s, 2, false},
        {"refused over a selection, which is back", u"gtk"_s, u"choosy"_s, u"Hi you"_s, 3, 6, true,
         u"Hi you"_s, 4, false},
        {"answered late", u"gtk"_s, u"slow"_s, u"Hi "_s, 3, 3, false, u"Hi all"_s, 1, false},
        {"done late", u"scripted"_s, u"late"_s, u"Hi "_s, 3, 3, false, u"Hi all"_s, 1, false},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        application = std::make_unique<CommandedApplication>(u"scripted-application"_s);
        application->command({u"toolkit"_s, each.toolkit});
        ASSERT_NO_FATAL_FAILURE(makeField(each.text, each.start, each.end));
        application->command({u"manner"_s, each.manner});
        TextInsertionManager manager(platform);
        memory.output.clear();
        memory.pasteboard->isFetched = false;
        EXPECT_TRUE(manager.insertText(u"all"_s));
        EXPECT_EQ(pasted(), each.pasted);
        EXPECT_EQ(manager.lastInsertionArrived(), each.seenAtOnce);
        // What is late is seen when it has come, and was inserted once.
        EXPECT_TRUE(waitUntil([&] { return manager.lastInsertionArrived() != each.pasted; }));
        const QJsonArray field = application->command({u"get"_s, u"field"_s}).toArray();
        EXPECT_EQ(field[0].toString(), each.expected);
        EXPECT_EQ(field[1].toInt(), each.insertions);
        // A paste replaces what was selected.
        const int caret = static_cast<int>(each.expected.size());
        EXPECT_EQ(field[2], (QJsonArray{each.pasted ? each.start : caret, caret}));
    }
}

TEST_F(AtSpiScriptedTest, PastesIntoAPageInAQtWindow)
{
    for (const bool isInPage : {true, false}) {
        application = std::make_unique<CommandedApplication>(u"scripted-application"_s);
        application->command({u"toolkit"_s, u"Qt"_s});
        ASSERT_NO_FATAL_FAILURE(makeField(u"Hi "_s, 3, 3));
        make(u"part"_s, object(AtSpiRole::text, {}, {u"field"_s}));
        make(u"page"_s,
             object(isInPage ? AtSpiRole::documentWeb : AtSpiRole::text, {}, {u"part"_s}));
        TextInsertionManager manager(platform);
        memory.output.clear();
        EXPECT_TRUE(manager.insertText(u"all"_s));
        EXPECT_EQ(pasted(), isInPage);
        const QJsonArray field = application->command({u"get"_s, u"field"_s}).toArray();
        EXPECT_EQ(field[1].toInt(), isInPage ? 0 : 1) << "what is pasted is not written as well";
    }
}

TEST_F(AtSpiScriptedTest, TextCountsAsThereWhileTheCaretIsAtItsEnd)
{
    ASSERT_NO_FATAL_FAILURE(makeField(u"Hi "_s, 3, 3));
    TextInsertionManager manager(platform);
    EXPECT_TRUE(manager.insertText(u"all"_s));
    EXPECT_TRUE(manager.isAtLastInsertion());
    struct Case
    {
        QString text;
        int start;
        int end;
        bool stands;
    };
    for (const auto &[text, start, end, stands] :
         {Case{u"Hi all"_s, 2, 2, false}, Case{u"Hi all"_s, 3, 6, false},
          Case{u"Hi all!"_s, 6, 6, false}, Case{u"Hi you"_s, 6, 6, false},
          Case{u"Hi all"_s, 6, 6, true}}) {
        ASSERT_NO_FATAL_FAILURE(makeField(text, start, end));
        EXPECT_EQ(manager.isAtLastInsertion(), stands) << text.toStdString() << start << end;
    }
    // Another field in the same window.
    QJsonObject other = object(AtSpiRole::text, focusedField);
    make(u"other"_s, other);
    announce(u"other"_s);
    EXPECT_TRUE(waitUntil([&] { return !manager.isAtLastInsertion(); }));
}

TEST_F(AtSpiScriptedTest, ATextWithObjectsInItIsPastedInto)
{
    const QString text = u"one \uFFFC two"_s;
    ASSERT_NO_FATAL_FAILURE(makeField(text, 9, 9));
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());
    EXPECT_EQ(application->command({u"get"_s, u"field"_s}).toArray()[0], text);
}

TEST_F(AtSpiScriptedTest, KnowsASearchFieldByItsAttributes)
{
    ASSERT_NO_FATAL_FAILURE(makeField({}, 0, 0));
    const std::pair<QJsonObject, Role> cases[] = {
        {{{u"xml-roles"_s, u"searchbox"_s}}, Role::searchField},
        {{{u"text-input-type"_s, u"search"_s}}, Role::searchField},
        {{{u"text-input-type"_s, u"text"_s}}, Role::textField},
    };
    for (const auto &[attributes, role] : cases) {
        QJsonObject field = object(AtSpiRole::entry, focusedField);
        field[u"attributes"_s] = attributes;
        make(u"field"_s, field);
        EXPECT_EQ(roleOf(focused()), role);
    }
}

TEST_F(AtSpiScriptedTest, AWindowThatIsNotActiveHasNoFocus)
{
    // The field says that it has the focus all the while, as in some toolkits.
    ASSERT_NO_FATAL_FAILURE(makeField({}, 0, 0));
    application->command({u"window"_s, u"window"_s, u"Deactivate"_s});
    EXPECT_TRUE(waitUntil([&] { return focused() == nullptr; }));
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());
}

TEST_F(AtSpiScriptedTest, OfManyThatClaimTheFocusTheTextFieldHasIt)
{
    make(u"cell"_s, object(AtSpiRole::tableCell, claiming));
    make(u"tab"_s, object(AtSpiRole::pageTab, claiming));
    make(u"button"_s, object(AtSpiRole::pushButton, claiming));
    make(u"blank"_s, object(AtSpiRole::documentWeb, claiming));
    make(u"page"_s, object(AtSpiRole::documentWeb, claiming, {u"hidden"_s}));
    make(u"hidden"_s, object(AtSpiRole::text, {u"focused"_s, u"editable"_s}));
    make(u"field"_s, object(AtSpiRole::text, focusedField));
    make(u"terminal"_s, object(AtSpiRole::terminal, claiming));
    struct Case
    {
        const char *what;
        QJsonArray inBox;
        QString announced;
        std::optional<Role> role;
    };
    const Case cases[] = {
        {"a cell announced", {u"field"_s, u"cell"_s}, u"cell"_s, Role::textField},
        {"the field announced", {u"cell"_s, u"field"_s}, u"field"_s, Role::textField},
        {"a terminal, its tab announced", {u"tab"_s, u"terminal"_s}, u"tab"_s, Role::textArea},
        {"no field in sight", {u"hidden"_s, u"button"_s}, u"button"_s, Role::button},
        {"a page that is not spelt out", {u"blank"_s}, {}, std::nullopt},
        {"a page without a field", {u"page"_s}, {}, Role::webArea},
        {"nothing announced", {u"tab"_s, u"field"_s, u"cell"_s}, {}, Role::textField},
    };
    for (const bool tellsAll : {false, true}) {
        for (const Case &each : cases) {
            SCOPED_TRACE(testing::Message() << each.what << (tellsAll ? ", asked at once" : ""));
            application->command({u"toolkit"_s, u"Qt"_s});
            application->command({u"window"_s, u"window"_s, u"Deactivate"_s});
            ASSERT_TRUE(waitUntil([&] { return focused() == nullptr; }));
            make(u"box"_s, object(AtSpiRole::filler, claiming, each.inBox));
            activate({u"box"_s}, tellsAll);
            if (!each.announced.isEmpty())
                announce(each.announced);
            EXPECT_TRUE(waitUntil([&] { return focused() && roleOf(focused()) == each.role; }));
        }
    }
}

} // namespace
} // namespace Velloro
