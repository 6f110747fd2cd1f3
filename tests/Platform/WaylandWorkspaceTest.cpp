#include "Platform/Linux/Wayland/WaylandWorkspace.h"

#include "Platform/Linux/Wayland/Windows/ForeignToplevels.h"
#include "Platform/WaylandTestBase.h"

#include <QFile>

namespace Velloro {
namespace {

class WaylandWorkspaceTest : public WaylandTestBase
{
protected:
    /// What the shell of this window wrote of its terminal's process.
    pid_t noted(const QString &name)
    {
        QFile file(sway.path(name));
        EXPECT_TRUE(waitUntil([&] { return file.open(QIODevice::ReadOnly) && file.size() > 0; }));
        return file.readAll().trimmed().toInt();
    }
    [[nodiscard]] QString terminal(const QString &program, const QString &name)
    {
        return program + u" sh -c 'echo $PPID > %1; exec cat'"_s.arg(sway.path(name));
    }
};

TEST_F(WaylandWorkspaceTest, followsTheFocus)
{
    WaylandWorkspace workspace(windows);
    EXPECT_EQ(workspace.frontmostApplication(), std::nullopt);
    EXPECT_EQ(workspace.frontmostWindow(), std::nullopt);

    open(terminal(u"foot"_s, u"foot"_s), u"foot"_s);
    EXPECT_EQ(workspace.frontmostApplication(), (RunningApplication{noted(u"foot"_s), true}));
    const auto first = workspace.frontmostWindow();
    EXPECT_NE(first, std::nullopt);

    open(u"foot --app-id=notes cat"_s, u"notes"_s);
    EXPECT_FALSE(workspace.frontmostApplication()->isKnownToTakeText);
    EXPECT_NE(workspace.frontmostWindow(), first);

    // An X11 window has a class.
    open(terminal(u"xterm -e"_s, u"xterm"_s), u"XTerm"_s);
    EXPECT_EQ(workspace.frontmostApplication(), (RunningApplication{noted(u"xterm"_s), true}));

    for (const auto &closing : {u"XTerm"_s, u"notes"_s, u"foot"_s}) {
        ASSERT_EQ(activeName(*windows), closing);
        const auto closed = workspace.frontmostWindow();
        (void)SwayCompositor::run(u"swaymsg"_s, {u"kill"_s});
        ASSERT_TRUE(waitUntil([&] { return workspace.frontmostWindow() != closed; }));
    }
    EXPECT_EQ(workspace.frontmostWindow(), std::nullopt);
    // Another desktop has windows of its own.
    open(u"foot cat"_s, u"foot"_s);
    (void)SwayCompositor::run(u"swaymsg"_s, {u"workspace"_s, u"2"_s});
    EXPECT_TRUE(waitUntil([&] { return !workspace.frontmostWindow(); }));
}

TEST_F(WaylandWorkspaceTest, knowsWindowsWithoutTheSocketOfSway)
{
    const auto toplevels = ForeignToplevels::make(connection);
    ASSERT_TRUE(toplevels);
    EXPECT_EQ(toplevels->activeWindow(), std::nullopt);
    open(u"foot cat"_s, u"foot"_s);
    ASSERT_TRUE(waitUntil([&] { return activeName(*toplevels) == u"foot"; }));
    const auto first = toplevels->activeWindow()->number;
    open(u"foot --app-id=notes cat"_s, u"notes"_s);
    ASSERT_TRUE(waitUntil([&] { return activeName(*toplevels) == u"notes"; }));
    EXPECT_NE(toplevels->activeWindow()->number, first);
    (void)SwayCompositor::run(u"swaymsg"_s, {u"kill"_s});
    EXPECT_TRUE(waitUntil([&] {
        const auto active = toplevels->activeWindow();
        return active && active->number == first;
    }));
}

TEST_F(WaylandWorkspaceTest, endsWithTheCompositor)
{
    open(u"foot cat"_s, u"foot"_s);
    sway.kill();
    EXPECT_TRUE(waitUntil([&] { return !windows->isAlive(); }));
    EXPECT_EQ(windows->activeWindow(), std::nullopt);
}

} // namespace
} // namespace Velloro
