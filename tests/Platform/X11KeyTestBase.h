#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/PhysicalKeyboard.h"

#include <gmock/gmock.h>
#include <memory>

namespace Velloro {

/// Keys on a server with a keyboard of its own, which has the American layout at first. Who
/// overrides `SetUp` asks `IsSkipped` after calling this one.
class X11KeyTestBase : public ::testing::Test
{
protected:
    void SetUp() override
    {
        connection = X11Connection::open();
        if (!connection)
            GTEST_SKIP() << "there is no X server";
        if (!keyboard.isThere())
            GTEST_SKIP() << "the X server has no keyboard of its own (Xvfb has)";
        setKeyboardLayout({u"us"_s});
    }
    void TearDown() override
    {
        setKeyboardLayout({u"us"_s});
        keyboard.unlock();
    }

    PhysicalKeyboard keyboard;
    std::shared_ptr<X11Connection> connection;
};

} // namespace Velloro
