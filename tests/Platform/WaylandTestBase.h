#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Linux/Wayland/Windows/SwayTree.h"
#include "Support/SwayCompositor.h"
#include "Support/WaitUntil.h"

#include <csignal>
#include <gmock/gmock.h>
#include <memory>

namespace Velloro {

/// A compositor and what it tells of its windows.
class WaylandTestBase : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (const auto missing = SwayCompositor::missing({u"foot"_s, u"xterm"_s, u"Xwayland"_s});
            !missing.isEmpty())
            GTEST_SKIP() << missing.join(u", "_s).toStdString() << " not installed";
        std::signal(SIGPIPE, SIG_IGN);
        ASSERT_TRUE(sway.start());
        connection = WaylandConnection::open();
        ASSERT_TRUE(connection);
        windows = WindowList::make(connection);
        ASSERT_TRUE(windows);
    }
    /// The name of the window with the focus; empty when none has it.
    static QString activeName(WindowList &list)
    {
        const auto active = list.activeWindow();
        return active ? active->windowClass.name : QString();
    }
    /// Starts a program and waits until its window has the focus.
    void open(const QString &command, const QString &name)
    {
        sway.execute(command);
        ASSERT_TRUE(waitUntil([&] { return activeName(*windows) == name; })) << name.toStdString();
    }

    SwayCompositor sway;
    std::shared_ptr<WaylandConnection> connection;
    std::shared_ptr<WindowList> windows;
};

} // namespace Velloro
