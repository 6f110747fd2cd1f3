#include "Platform/Linux/X11/X11Workspace.h"

#include "Base/StringLiterals.h"
#include "Platform/KeyWindow.h"

#include <QProcess>
#include <gmock/gmock.h>
#include <unistd.h>

namespace Velloro {
namespace {

class X11WorkspaceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        connection = X11Connection::open();
        if (!connection)
            GTEST_SKIP() << "there is no X server";
        workspace = std::make_unique<X11Workspace>(connection);
    }

    std::shared_ptr<X11Connection> connection;
    std::unique_ptr<X11Workspace> workspace;
};

TEST_F(X11WorkspaceTest, knowsWhoseTheActiveWindowIs)
{
    {
        KeyWindow window;
        ASSERT_TRUE(window.isReady);
        const RunningApplication here{getpid()};
        EXPECT_TRUE(waitUntil([&] { return workspace->frontmostApplication() == here; }));
        EXPECT_EQ(workspace->activeWindowClass(), (WindowClass{u"editor"_s, u"Editor"_s}));
        EXPECT_EQ(workspace->frontmostWindow(), window.window());

        // What the window says of itself counts less than what the server knows; a window from
        // another machine has no process here.
        const uint32_t elsewhere = 2;
        xcb_change_property(connection->xcb(), XCB_PROP_MODE_REPLACE, window.window(),
                            connection->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &elsewhere);
        EXPECT_EQ(workspace->frontmostApplication(), here);
        const QByteArray machine = "far-away.example";
        xcb_change_property(connection->xcb(), XCB_PROP_MODE_REPLACE, window.window(),
                            XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 8,
                            static_cast<uint32_t>(machine.size()), machine.constData());
        EXPECT_EQ(workspace->frontmostApplication(), std::nullopt);
    }
    EXPECT_TRUE(waitUntil(
        [&] { return !workspace->activeWindowClass() && !workspace->frontmostApplication(); }));
    EXPECT_EQ(X11Workspace(nullptr).frontmostApplication(), std::nullopt);
}

TEST_F(X11WorkspaceTest, followsTheFocusToAnotherProgram)
{
    QProcess terminal;
    terminal.start(u"xterm"_s, {u"-name"_s, u"notes"_s, u"-e"_s, u"cat"_s});
    if (!terminal.waitForStarted())
        GTEST_SKIP() << "xterm is not installed";
    EXPECT_TRUE(waitUntil([&] {
        return workspace->frontmostApplication()
            == RunningApplication{static_cast<pid_t>(terminal.processId()), true};
    }));
    const WindowClass expected{u"notes"_s, u"XTerm"_s};
    EXPECT_TRUE(waitUntil([&] { return workspace->activeWindowClass() == expected; }));
    terminal.kill();
    terminal.waitForFinished();
}

} // namespace
} // namespace Velloro
