#include "Base/StringLiterals.h"
#include "Platform/AtSpiTestBase.h"
#include "Platform/Linux/Accessibility/AtSpiRole.h"
#include "Platform/Linux/Accessibility/AtSpiTimeAllowance.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <csignal>

namespace Velloro {
namespace {

/// Milliseconds: far more than anything here takes unless it waits without a bound, or again and
/// again.
constexpr qint64 hangGuard = 10'000;

/// The window of tests/Platform/text-window.
class TextWindow : public CommandedApplication
{
public:
    explicit TextWindow(const QString &toolkit)
        : CommandedApplication(u"text-window"_s, {toolkit})
    {
    }

    bool waitUntilActive()
    {
        return waitUntil([&] { return command({u"active"_s}).toBool(); });
    }
    void set(const QString &name, const QString &text, int start, int end)
    {
        command({u"set"_s, name, text, start, end});
    }
    QString text(const QString &name)
    {
        return command({u"get"_s, name}).toArray().at(0).toString();
    }
    int caret(const QString &name) { return command({u"get"_s, name}).toArray().at(1).toInt(); }
};

bool has(const QString &toolkit)
{
    const QString check = toolkit == u"gtk" ? u"import gi; gi.require_version('Gtk', '3.0')"_s
                                            : u"import PyQt6.QtWidgets"_s;
    return QProcess::execute(u"/usr/bin/python3"_s, {u"-c"_s, check}) == 0;
}

TEST(AtSpiRoleTest, KnowsTextFieldsAndNothingElseAsSuch)
{
    const auto states = [](std::initializer_list<AtSpiStates::State> list) {
        uint64_t bits = 0;
        for (const AtSpiStates::State state : list)
            bits |= uint64_t{1} << state;
        return AtSpiStates(bits);
    };
    constexpr uint32_t paragraph = 73;
    constexpr uint32_t section = 85;
    using Role = AccessibilityRole;
    struct Case
    {
        uint32_t role;
        AtSpiStates states;
        std::optional<Role> is;
    };
    const Case cases[] = {
        {AtSpiRole::text, states({AtSpiStates::singleLine}), Role::textField},
        {AtSpiRole::text, states({AtSpiStates::multiLine}), Role::textArea},
        {AtSpiRole::entry, {}, Role::textField},
        {AtSpiRole::entry, states({AtSpiStates::multiLine}), Role::textArea},
        {AtSpiRole::spinButton, {}, Role::textField},
        {AtSpiRole::terminal, {}, Role::textArea},
        {AtSpiRole::comboBox, states({AtSpiStates::editable}), Role::comboBox},
        {AtSpiRole::comboBox, {}, Role::other},
        {AtSpiRole::documentWeb, states({AtSpiStates::editable}), Role::textArea},
        {AtSpiRole::documentWeb, {}, Role::webArea},
        {paragraph, states({AtSpiStates::editable}), Role::textArea},
        {section, states({AtSpiStates::editable, AtSpiStates::singleLine}), Role::textField},
        {section, {}, Role::other},
        {AtSpiRole::label, {}, Role::staticText},
        // A surface on which an application draws may well be its text.
        {AtSpiRole::drawingArea, {}, std::nullopt},
        {AtSpiRole::unknown, {}, std::nullopt},
        // A container has the focus on behalf of what is in it.
        {AtSpiRole::filler, {}, std::nullopt},
        {AtSpiRole::panel, {}, std::nullopt},
        {AtSpiRole::pageTab, {}, std::nullopt},
        {AtSpiRole::splitPane, {}, std::nullopt},
        {AtSpiRole::frame, {}, std::nullopt},
    };
    for (const Case &each : cases)
        EXPECT_EQ(AtSpiRole::accessibilityRole(each.role, each.states), each.is) << each.role;
}

TEST(AtSpiTimeAllowanceTest, IsWholeAgainWhenTheEventLoopHasComeRound)
{
    AtSpiTimeAllowance allowance;
    const auto whole = allowance.remaining();
    const quint64 turn = allowance.turn();
    const std::chrono::milliseconds part(100);
    allowance.spend(part);
    EXPECT_EQ(allowance.remaining(), whole - part);
    allowance.spend(whole);
    EXPECT_EQ(allowance.remaining(), std::chrono::milliseconds(0));
    EXPECT_EQ(allowance.turn(), turn);

    EXPECT_TRUE(waitUntil([&] { return allowance.remaining() == whole; }));
    EXPECT_EQ(allowance.turn(), turn + 1);
}

class AtSpiToolkitTest : public AtSpiTest, public testing::WithParamInterface<const char *>
{
protected:
    void SetUp() override
    {
        AtSpiTest::SetUp();
        if (IsSkipped())
            return;
        if (!has(QString::fromLatin1(GetParam())))
            GTEST_SKIP() << "the Python module of this toolkit is not installed";
        // The window has its focus before anybody listens.
        window = std::make_unique<TextWindow>(QString::fromLatin1(GetParam()));
        ASSERT_TRUE(window->waitUntilActive());
        window->command({u"focus"_s, u"button"_s});
        connect();
        ASSERT_TRUE(waitForRole(Role::button));
    }

    /// Gives a field its text, its selection and the focus.
    void prepare(const QString &name, const QString &text, int start, int end)
    {
        window->command({u"focus"_s, u"button"_s});
        ASSERT_TRUE(waitForRole(Role::button));
        window->command({u"focus"_s, name});
        window->set(name, text, start, end);
        ASSERT_TRUE(waitUntil([&] {
            const auto role = roleOf(focused());
            return role == Role::textField || role == Role::textArea;
        }));
    }

    std::unique_ptr<TextWindow> window;
};

TEST_P(AtSpiToolkitTest, FollowsTheFocusAndKnowsItsRole)
{
    const std::pair<QString, Role> fields[] = {
        {u"entry"_s, Role::textField},    {u"button"_s, Role::button},
        {u"area"_s, Role::textArea},      {u"button"_s, Role::button},
        {u"password"_s, Role::textField},
    };
    for (const auto &[name, role] : fields) {
        window->command({u"focus"_s, name});
        EXPECT_TRUE(waitForRole(role)) << name.toStdString();
        EXPECT_EQ(roleOf(focusedOf(window->pid())), role);
    }
    EXPECT_EQ(focusedOf(getpid()), nullptr);
    EXPECT_EQ(focusedOf(1), nullptr);
}

TEST_P(AtSpiToolkitTest, InsertsAtTheCaretAndOverTheSelection)
{
    struct Case
    {
        QString text;
        int start;
        int end;
        QString inserted;
        QString expected;
        int caret;
    };
    // Offsets are code points here.
    const Case cases[] = {
        {u""_s, 0, 0, u"Hello"_s, u"Hello"_s, 5},
        {u"Hello world"_s, 5, 5, u", my"_s, u"Hello, my world"_s, 9},
        {u"Hello world"_s, 6, 11, u"there"_s, u"Hello there"_s, 11},
        {u"aaaa"_s, 2, 2, u"aa"_s, u"aaaaaa"_s, 4},
        {u"abcabc"_s, 0, 3, u"abcd"_s, u"abcdabc"_s, 4},
        {u"a😀b😀c"_s, 3, 4, u"🎉é!"_s, u"a😀b🎉é!c"_s, 6},
        {u"👨‍👩‍👧 x"_s, 5, 5, u"ł"_s, u"👨‍👩‍👧ł x"_s, 6},
        {u"ne\u0301e"_s, 3, 4, u"ö"_s, u"ne\u0301ö"_s, 4},
        {u"你好世界"_s, 2, 2, u"，美丽的"_s, u"你好，美丽的世界"_s, 6},
        // Halves of these two are the same code unit.
        {u"😀"_s, 0, 1, u"😁"_s, u"😁"_s, 1},
    };
    for (const QString &field : {u"entry"_s, u"area"_s}) {
        for (const Case &each : cases) {
            SCOPED_TRACE(field.toStdString() + ": " + each.expected.toStdString());
            ASSERT_NO_FATAL_FAILURE(prepare(field, each.text, each.start, each.end));
            EXPECT_TRUE(insert(each.inserted));
            EXPECT_FALSE(pasted());
            EXPECT_EQ(window->text(field), each.expected);
            EXPECT_EQ(window->caret(field), each.caret);
        }
    }
}

TEST_P(AtSpiToolkitTest, KeepsTheSelectionOfSeveralLines)
{
    ASSERT_NO_FATAL_FAILURE(prepare(u"area"_s, u"one\n😀 two\nthree"_s, 4, 9));
    EXPECT_TRUE(insert(u"2\nand a half"_s));
    EXPECT_EQ(window->text(u"area"_s), u"one\n2\nand a half\nthree"_s);
    // Selecting, which no insertion does.
    const auto element = focused();
    EXPECT_TRUE(platform.accessibility->setSelection(element, {4, 1}));
    EXPECT_TRUE(platform.accessibility->insert(element, u"😀😀"_s));
    EXPECT_EQ(window->text(u"area"_s), u"one\n😀😀\nand a half\nthree"_s);
    EXPECT_EQ(window->caret(u"area"_s), 6);
}

TEST_P(AtSpiToolkitTest, NeitherReadsNorSpoilsAPassword)
{
    ASSERT_NO_FATAL_FAILURE(prepare(u"password"_s, u"s🔑cret"_s, 3, 3));
    EXPECT_FALSE(platform.accessibility->text(focused()));
    EXPECT_TRUE(insert(u"•é🔒"_s));
    EXPECT_FALSE(pasted());
    EXPECT_EQ(window->text(u"password"_s), u"s🔑c•é🔒ret"_s);
    EXPECT_EQ(window->caret(u"password"_s), 6);

    // What can't be put back is left to a paste.
    ASSERT_NO_FATAL_FAILURE(prepare(u"password"_s, u"secret"_s, 2, 4));
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());
    EXPECT_EQ(window->text(u"password"_s), u"secret"_s);
}

TEST_P(AtSpiToolkitTest, LeavesFieldsThatCannotBeWrittenToThePasteboard)
{
    ASSERT_NO_FATAL_FAILURE(prepare(u"readOnly"_s, u"fixed"_s, 1, 3));
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());
    EXPECT_EQ(window->text(u"readOnly"_s), u"fixed"_s);

    // A full field loses nothing but what typing over it would replace.
    ASSERT_NO_FATAL_FAILURE(prepare(u"short"_s, u"Hello"_s, 2, 5));
    EXPECT_TRUE(insert(u"xyz"_s));
    EXPECT_EQ(window->text(u"short"_s), u"Hexyz"_s);
}

TEST_P(AtSpiToolkitTest, AStoppedApplicationIsWaitedForOnce)
{
    ASSERT_NO_FATAL_FAILURE(prepare(u"entry"_s, u"Hello"_s, 5, 5));
    kill(window->pid(), SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(insert(u" you"_s));
    EXPECT_TRUE(pasted());

    // While it does not answer it costs nothing, in this turn of the event loop and in later ones:
    // a quarter of a second each time would add up.
    for (int turn = 0; turn < 60; ++turn) {
        QCoreApplication::processEvents();
        EXPECT_TRUE(insert(u" you"_s));
        EXPECT_EQ(focusedOf(window->pid()), nullptr);
        EXPECT_TRUE(platform.accessibility->isProcessTrusted());
        EXPECT_TRUE(pasted());
    }
    EXPECT_LE(timer.elapsed(), hangGuard);

    kill(window->pid(), SIGCONT);
    ASSERT_TRUE(waitUntil([&] { return focused() != nullptr; }));
    // Nothing that was given up is done belatedly.
    EXPECT_EQ(window->text(u"entry"_s), u"Hello"_s);
    EXPECT_TRUE(insert(u"!"_s));
    EXPECT_FALSE(pasted());
    EXPECT_EQ(window->text(u"entry"_s), u"Hello!"_s);
}

TEST_P(AtSpiToolkitTest, AnApplicationInFrontThatIsNotOnTheBusGetsAPaste)
{
    ASSERT_NO_FATAL_FAILURE(prepare(u"entry"_s, u"Hello"_s, 5, 5));
    {
        const Application terminal(u"xterm"_s, {});
        ASSERT_TRUE(waitUntil([&] { return !window->command({u"active"_s}).toBool(); }));
        EXPECT_TRUE(waitUntil([&] { return focused() == nullptr; }));
        EXPECT_TRUE(insert(u" you"_s));
        EXPECT_TRUE(pasted());
        EXPECT_EQ(window->text(u"entry"_s), u"Hello"_s);
    }
    ASSERT_TRUE(window->waitUntilActive());
    ASSERT_TRUE(waitForRole(Role::textField));
    window->set(u"entry"_s, u"Hello"_s, 5, 5);
    EXPECT_TRUE(insert(u" you"_s));
    EXPECT_EQ(window->text(u"entry"_s), u"Hello you"_s);
}

INSTANTIATE_TEST_SUITE_P(Toolkits, AtSpiToolkitTest, testing::Values("gtk", "qt"),
                         [](const auto &info) { return std::string(info.param); });

/// A call to the accessibility bus's launcher on the session bus.
QVariant launcherCall(const QString &service, const QString &path, const QString &interface,
                      const QString &method, const QVariantList &arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message).arguments().value(0);
}

TEST_F(AtSpiTest, AFocusOfItsOwnProcessIsAnsweredAtOnce)
{
    connect();
    const QString address
        = launcherCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s)
              .toString();
    auto bus = QDBusConnection::connectToBus(address, u"own-focus"_s);
    QDBusMessage event = QDBusMessage::createSignal(
        u"/org/a11y/atspi/accessible/1"_s, u"org.a11y.atspi.Event.Object"_s, u"StateChanged"_s);
    event.setArguments({u"focused"_s, 1, 0, QVariant::fromValue(QDBusVariant(0)), QVariantMap()});
    bus.send(event);
    QElapsedTimer timer;
    timer.start();
    (void)waitUntil([&] { return timer.elapsed() > 200; });
    for (int count = 0; count < 60; ++count)
        EXPECT_EQ(focused(), nullptr);
    EXPECT_LE(timer.elapsed(), hangGuard);
    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(u"own-focus"_s);
}

TEST_F(AtSpiTest, FollowsWhetherAccessibilityIsEnabled)
{
    connect();
    const auto set = [](bool enabled) {
        launcherCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.freedesktop.DBus.Properties"_s,
                     u"Set"_s,
                     {u"org.a11y.Status"_s, u"IsEnabled"_s,
                      QVariant::fromValue(QDBusVariant(QVariant(enabled)))});
    };
    set(false);
    EXPECT_TRUE(waitUntil([&] { return !platform.accessibility->isProcessTrusted(); }));
    EXPECT_FALSE(AtSpiAccessibility(std::make_shared<PasteCoordinator>()).isProcessTrusted());
    platform.accessibility->requestTrust();
    EXPECT_TRUE(waitUntil([&] { return platform.accessibility->isProcessTrusted(); }));
}

TEST_F(AtSpiTest, ABusThatHangsIsUsedWhenItAnswersAgain)
{
    connect();
    platform.accessibility.reset();
    const QString address
        = launcherCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s)
              .toString();
    auto bus = QDBusConnection::connectToBus(address, u"hanging-bus"_s);
    QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"GetConnectionUnixProcessID"_s);
    question.setArguments({u"org.freedesktop.DBus"_s});
    const uint daemon = bus.call(question).arguments().value(0).toUInt();
    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(u"hanging-bus"_s);
    ASSERT_GT(daemon, 1U);

    kill(static_cast<pid_t>(daemon), SIGSTOP);
    const auto goOn = qScopeGuard([&] { kill(static_cast<pid_t>(daemon), SIGCONT); });
    QElapsedTimer timer;
    timer.start();
    platform.accessibility
        = std::make_unique<AtSpiAccessibility>(std::make_shared<PasteCoordinator>());
    EXPECT_FALSE(platform.accessibility->isProcessTrusted());
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());
    // One that is given up while it asks.
    AtSpiAccessibility(std::make_shared<PasteCoordinator>()).requestTrust();
    EXPECT_LE(timer.elapsed(), hangGuard);

    kill(static_cast<pid_t>(daemon), SIGCONT);
    EXPECT_TRUE(waitUntil([&] { return platform.accessibility->isProcessTrusted(); }));
}

TEST_F(AtSpiTest, SurvivesTheEndOfTheBus)
{
    if (!has(u"gtk"_s))
        GTEST_SKIP() << "the Python module of the toolkit is not installed";
    connect();
    const uint launcher = launcherCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                       u"org.freedesktop.DBus"_s, u"GetConnectionUnixProcessID"_s,
                                       {u"org.a11y.Bus"_s})
                              .toUInt();
    ASSERT_GT(launcher, 1U);
    kill(static_cast<pid_t>(launcher), SIGTERM);
    ASSERT_TRUE(waitUntil([&] { return !platform.accessibility->isProcessTrusted(); }));
    EXPECT_EQ(focused(), nullptr);
    EXPECT_TRUE(insert(u"x"_s));
    EXPECT_TRUE(pasted());

    // Looking for the bus starts it again; it may have to be enabled anew.
    ASSERT_TRUE(waitUntil([&] {
        platform.accessibility->requestTrust();
        return platform.accessibility->isProcessTrusted();
    }));
    TextWindow window(u"gtk"_s);
    ASSERT_TRUE(window.waitUntilActive());
    window.command({u"focus"_s, u"area"_s});
    ASSERT_TRUE(waitForRole(Role::textArea));
    EXPECT_TRUE(insert(u"again"_s));
    EXPECT_FALSE(pasted());
    EXPECT_EQ(window.text(u"area"_s), u"again"_s);
}

} // namespace
} // namespace Velloro
