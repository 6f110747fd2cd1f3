#include "Platform/AtSpiTestBase.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"

#include <QJsonObject>

namespace Velloro {
namespace {

const QJsonArray focusedField{u"focused"_qs, u"showing"_qs, u"editable"_qs};
const QJsonArray claiming{u"focused"_qs, u"showing"_qs};

/// An object of tests/Platform/scripted-application.
QJsonObject object(int role, const QJsonArray &states, const QJsonArray &children = {})
{
    return {{u"role"_qs, role}, {u"states"_qs, states}, {u"children"_qs, children}};
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
        application = std::make_unique<CommandedApplication>(u"scripted-application"_qs);
        if (!application->command({u"toolkit"_qs, u"gtk"_qs}).toBool())
            GTEST_SKIP() << "the Python module of GLib is not installed";
    }

    void make(const QString &name, const QJsonObject &object)
    {
        application->command({u"object"_qs, name, object});
    }
    /// The window becomes active; nothing is said of its focus.
    void activate(const QJsonArray &children, bool tellsAll = false)
    {
        QJsonObject window =
            object(AtSpiRole::frame, {u"active"_qs, u"showing"_qs, u"focused"_qs}, children);
        window[u"collection"_qs] = tellsAll;
        make(u"window"_qs, window);
        application->command({u"window"_qs, u"window"_qs, u"Activate"_qs});
    }
    void announce(const QString &name) { application->command({u"focus"_qs, name, 1}); }

    /// A field with the focus, and what is selected in it.
    void makeField(const QString &text, int start, int end)
    {
        QJsonObject field = object(AtSpiRole::text, focusedField);
        field[u"text"_qs] = text;
        field[u"selection"_qs] = QJsonArray{start, end};
        make(u"field"_qs, field);
        activate({u"field"_qs});
        announce(u"field"_qs);
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
        {"done", u"gtk"_qs, u"obedient"_qs, u"Hi you"_qs, 3, 6, false, u"Hi all"_qs, 1, true},
        {"a toolkit that only claims it", u"Gecko"_qs, u"idle"_qs, u"Hi "_qs, 3, 3, true, u"Hi "_qs,
         0, false},
        {"not done", u"gtk"_qs, u"idle"_qs, u"Hi "_qs, 3, 3, true, u"Hi "_qs, 2, false},
        {"refused over a selection, which is back", u"gtk"_qs, u"choosy"_qs, u"Hi you"_qs, 3, 6, true,
         u"Hi you"_qs, 4, false},
        {"answered late", u"gtk"_qs, u"slow"_qs, u"Hi "_qs, 3, 3, false, u"Hi all"_qs, 1, false},
        {"done late", u"scripted"_qs, u"late"_qs, u"Hi "_qs, 3, 3, false, u"Hi all"_qs, 1, false},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        application = std::make_unique<CommandedApplication>(u"scripted-application"_qs);
        application->command({u"toolkit"_qs, each.toolkit});
        ASSERT_NO_FATAL_FAILURE(makeField(each.text, each.start, each.end));
        application->command({u"manner"_qs, each.manner});
        TextInsertionManager manager(platform);
        memory.output.clear();
        memory.pasteboard->isFetched = false;
        EXPECT_TRUE(manager.insertText(u"all"_qs));
        EXPECT_EQ(pasted(), each.pasted);
        EXPECT_EQ(manager.lastInsertionArrived(), each.seenAtOnce);
        // What is late is seen when it has come, and was inserted once.
        EXPECT_TRUE(waitUntil([&] { return manager.lastInsertionArrived() != each.pasted; }));
        const QJsonArray field = application->command({u"get"_qs, u"field"_qs}).toArray();
        EXPECT_EQ(field[0].toString(), each.expected);
        EXPECT_EQ(field[1].toInt(), each.insertions);
        // A paste replaces what was selected.
        const int caret = static_cast<int>(each.expected.size());
        EXPECT_EQ(field[2], (QJsonArray{each.pasted ? each.start : caret, caret}));
    }
}

TEST_F(AtSpiScriptedTest, TextCountsAsThereWhileTheCaretIsAtItsEnd)
{
    ASSERT_NO_FATAL_FAILURE(makeField(u"Hi "_qs, 3, 3));
    TextInsertionManager manager(platform);
    EXPECT_TRUE(manager.insertText(u"all"_qs));
    EXPECT_TRUE(manager.isAtLastInsertion());
    struct Case
    {
        QString text;
        int start;
        int end;
        bool stands;
    };
    for (const auto &[text, start, end, stands] :
         {Case{u"Hi all"_qs, 2, 2, false}, Case{u"Hi all"_qs, 3, 6, false},
          Case{u"Hi all!"_qs, 6, 6, false}, Case{u"Hi you"_qs, 6, 6, false},
          Case{u"Hi all"_qs, 6, 6, true}}) {
        ASSERT_NO_FATAL_FAILURE(makeField(text, start, end));
        EXPECT_EQ(manager.isAtLastInsertion(), stands) << text.toStdString() << start << end;
    }
    // Another field in the same window.
    QJsonObject other = object(AtSpiRole::text, focusedField);
    make(u"other"_qs, other);
    announce(u"other"_qs);
    EXPECT_TRUE(waitUntil([&] { return !manager.isAtLastInsertion(); }));
}

TEST_F(AtSpiScriptedTest, ATextWithObjectsInItIsPastedInto)
{
    const QString text = u"one \uFFFC two"_qs;
    ASSERT_NO_FATAL_FAILURE(makeField(text, 9, 9));
    EXPECT_TRUE(insert(u"x"_qs));
    EXPECT_TRUE(pasted());
    EXPECT_EQ(application->command({u"get"_qs, u"field"_qs}).toArray()[0], text);
}

TEST_F(AtSpiScriptedTest, KnowsASearchFieldByItsAttributes)
{
    ASSERT_NO_FATAL_FAILURE(makeField({}, 0, 0));
    const std::pair<QJsonObject, Role> cases[] = {
        {{{u"xml-roles"_qs, u"searchbox"_qs}}, Role::searchField},
        {{{u"text-input-type"_qs, u"search"_qs}}, Role::searchField},
        {{{u"text-input-type"_qs, u"text"_qs}}, Role::textField},
    };
    for (const auto &[attributes, role] : cases) {
        QJsonObject field = object(AtSpiRole::entry, focusedField);
        field[u"attributes"_qs] = attributes;
        make(u"field"_qs, field);
        EXPECT_EQ(roleOf(focused()), role);
    }
}

TEST_F(AtSpiScriptedTest, AWindowThatIsNotActiveHasNoFocus)
{
    // The field says that it has the focus all the while, as in some toolkits.
    ASSERT_NO_FATAL_FAILURE(makeField({}, 0, 0));
    application->command({u"window"_qs, u"window"_qs, u"Deactivate"_qs});
    EXPECT_TRUE(waitUntil([&] { return focused() == nullptr; }));
    EXPECT_TRUE(insert(u"x"_qs));
    EXPECT_TRUE(pasted());
}

TEST_F(AtSpiScriptedTest, OfManyThatClaimTheFocusTheTextFieldHasIt)
{
    make(u"cell"_qs, object(AtSpiRole::tableCell, claiming));
    make(u"tab"_qs, object(AtSpiRole::pageTab, claiming));
    make(u"button"_qs, object(AtSpiRole::pushButton, claiming));
    make(u"blank"_qs, object(AtSpiRole::documentWeb, claiming));
    make(u"page"_qs, object(AtSpiRole::documentWeb, claiming, {u"hidden"_qs}));
    make(u"hidden"_qs, object(AtSpiRole::text, {u"focused"_qs, u"editable"_qs}));
    make(u"field"_qs, object(AtSpiRole::text, focusedField));
    make(u"terminal"_qs, object(AtSpiRole::terminal, claiming));
    struct Case
    {
        const char *what;
        QJsonArray inBox;
        QString announced;
        std::optional<Role> role;
    };
    const Case cases[] = {
        {"a cell announced", {u"field"_qs, u"cell"_qs}, u"cell"_qs, Role::textField},
        {"the field announced", {u"cell"_qs, u"field"_qs}, u"field"_qs, Role::textField},
        {"a terminal, its tab announced", {u"tab"_qs, u"terminal"_qs}, u"tab"_qs, Role::textArea},
        {"no field in sight", {u"hidden"_qs, u"button"_qs}, u"button"_qs, Role::button},
        {"a page that is not spelt out", {u"blank"_qs}, {}, std::nullopt},
        {"a page without a field", {u"page"_qs}, {}, Role::webArea},
        {"nothing announced", {u"tab"_qs, u"field"_qs, u"cell"_qs}, {}, Role::textField},
    };
    for (const bool tellsAll : {false, true}) {
        for (const Case &each : cases) {
            SCOPED_TRACE(testing::Message() << each.what << (tellsAll ? ", asked at once" : ""));
            application->command({u"toolkit"_qs, u"Qt"_qs});
            application->command({u"window"_qs, u"window"_qs, u"Deactivate"_qs});
            ASSERT_TRUE(waitUntil([&] { return focused() == nullptr; }));
            make(u"box"_qs, object(AtSpiRole::filler, claiming, each.inBox));
            activate({u"box"_qs}, tellsAll);
            if (!each.announced.isEmpty())
                announce(each.announced);
            EXPECT_TRUE(waitUntil(
                [&] { return focused() && roleOf(focused()) == each.role; }));
        }
    }
}

} // namespace
} // namespace Velloro
