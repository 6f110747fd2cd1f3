#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/WaylandKeyboard.h"
#include "Support/SwayCompositor.h"
#include "Support/WaitUntil.h"

#include <QFile>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

/// The X server beside a compositor, with a window of each.
class XWaylandHotkeyTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (const auto missing = SwayCompositor::missing({u"foot"_s, u"xterm"_s, u"Xwayland"_s});
            !missing.isEmpty())
            GTEST_SKIP() << missing.join(u", "_s).toStdString() << " not installed";
        ASSERT_TRUE(sway.start());
        keyboard = std::make_unique<WaylandKeyboard>();
        const QString displayFile = sway.path(u"display"_s);
        sway.execute(u"echo $DISPLAY > %1.new && mv %1.new %1"_s.arg(displayFile));
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(displayFile); }));
        QFile file(displayFile);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        qputenv("DISPLAY", file.readAll().trimmed());
        sway.execute(u"foot"_s);
        sway.execute(u"xterm"_s);
        connection = X11Connection::open();
        ASSERT_TRUE(connection);
        X11Workspace workspace(connection);
        ASSERT_TRUE(waitUntil([&] { return workspace.activeWindowClass().has_value(); }));
    }
    void focus(const QString &criteria)
    {
        (void)SwayCompositor::run(u"swaymsg"_s, {u"[%1] focus"_s.arg(criteria)});
    }

    SwayCompositor sway;
    std::unique_ptr<WaylandKeyboard> keyboard;
    std::shared_ptr<X11Connection> connection;
};

TEST_F(XWaylandHotkeyTest, aPressEndsWhenTheFocusLeavesTheServersWindows)
{
    X11HotkeyRegistration hotkeys(connection, DisplayServer::wayland);
    QStringList events;
    hotkeys.setPressedHandler([&](const HotkeyIdentifier *) { events << u"press"_s; });
    hotkeys.setReleasedHandler([&](const HotkeyIdentifier *) { events << u"release"_s; });
    const auto become = [&](const QStringList &expected) {
        return waitUntil([&] { return events == expected; }, std::chrono::seconds(3));
    };
    ASSERT_TRUE(hotkeys.registerHotkey({49, ClassicMask::option}, {7, 1}));
    keyboard->press({Key::leftAlt, Key::space});
    ASSERT_TRUE(become({u"press"_s}));
    focus(u"app_id=foot"_s);
    EXPECT_TRUE(become({u"press"_s, u"release"_s}));
    keyboard->release({Key::space, Key::leftAlt});

    events.clear();
    focus(u"class=XTerm"_s);
    X11Workspace workspace(connection);
    ASSERT_TRUE(waitUntil([&] { return workspace.activeWindowClass().has_value(); }));
    keyboard->press({Key::leftAlt, Key::space});
    EXPECT_TRUE(become({u"press"_s})) << events.join(u' ').toStdString();
    keyboard->release({Key::space, Key::leftAlt});
    EXPECT_TRUE(become({u"press"_s, u"release"_s}));
}

} // namespace
} // namespace Velloro
