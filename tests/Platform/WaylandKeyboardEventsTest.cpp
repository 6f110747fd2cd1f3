#include "Platform/Linux/Wayland/Keyboard/WaylandKeyboardEvents.h"

#include "Platform/Linux/Wayland/Clipboard/WaylandPasteboard.h"
#include "Platform/WaylandTestBase.h"

#include <QFile>

namespace Velloro {
namespace {

constexpr uint32_t keyV = 9;
constexpr uint32_t keyDelete = 51;

class WaylandKeyboardEventsTest : public WaylandTestBase
{
protected:
    void SetUp() override
    {
        WaylandTestBase::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        pasteboard = std::make_unique<WaylandPasteboard>(pasting);
        keyboard = std::make_unique<WaylandKeyboardEvents>(
            connection, StrokeSender::make(*connection), windows, pasting);
    }
    void TearDown() override
    {
        keyboard.reset();
        pasteboard.reset();
    }
    bool stroke(uint32_t key, uint64_t flags)
    {
        return keyboard->post(key, true, flags) && keyboard->post(key, false, flags);
    }
    bool paste(const QString &text)
    {
        pasteboard->borrow(text);
        return stroke(keyV, KeyboardEvents::commandFlag);
    }
    /// The command line of a program in a terminal that notes everything it is given.
    [[nodiscard]] QString keeper() const
    {
        return u" sh -c 'stty -icanon -echo; touch %1; exec cat >> %1'"_s.arg(path());
    }
    [[nodiscard]] bool isKept(const QByteArray &expected) const
    {
        return waitUntil([&] {
            QFile file(path());
            return file.open(QIODevice::ReadOnly) && file.readAll() == expected;
        });
    }
    [[nodiscard]] QString path() const { return sway.path(u"kept"_s); }

    std::shared_ptr<PasteCoordinator> pasting = std::make_shared<PasteCoordinator>();
    std::unique_ptr<WaylandPasteboard> pasteboard;
    std::unique_ptr<WaylandKeyboardEvents> keyboard;
};

TEST_F(WaylandKeyboardEventsTest, pastesAndDeletesInTerminals)
{
    const std::tuple<QString, QString, QByteArray> terminals[] = {
        {u"foot"_s, u"foot"_s, "\x7f"},
        // By the primary selection, through the X server beside the compositor.
        {u"xterm -u8 -xrm '*backarrowKeyIsErase: true' -e"_s, u"XTerm"_s, "\x7f"},
    };
    for (const auto &[command, name, backspace] : terminals) {
        SCOPED_TRACE(name.toStdString());
        QFile::remove(path());
        open(command + keeper(), name);
        ASSERT_TRUE(isKept({}));
        ASSERT_TRUE(paste(u"słowa 😀"_s));
        EXPECT_TRUE(pasteboard->awaitPaste());
        EXPECT_TRUE(isKept("słowa 😀"));
        EXPECT_TRUE(stroke(keyDelete, 0));
        EXPECT_TRUE(keyboard->awaitReceipt());
        EXPECT_TRUE(isKept("słowa 😀" + backspace));
        pasteboard->giveBack();
    }
}

TEST_F(WaylandKeyboardEventsTest, sendsNothingThatGoesNowhere)
{
    EXPECT_FALSE(paste(u"words"_s)) << "no window has the focus";
    EXPECT_FALSE(stroke(keyV, 0)) << "a letter";
    EXPECT_FALSE(keyboard->post(keyV, false, 0)) << "it is not down";
    sway.kill();
    EXPECT_TRUE(waitUntil([&] { return !connection->isAlive(); }));
    EXPECT_FALSE(stroke(keyDelete, 0));
}

} // namespace
} // namespace Velloro
