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
    /// The command line of a program in a terminal that keeps each line it is given.
    [[nodiscard]] QString keeper() const
    {
        return u" sh -c 'touch %1; exec cat >> %1'"_s.arg(sway.path(u"lines"_s));
    }
    QByteArray lines() const
    {
        QFile file(sway.path(u"lines"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void awaitKeeper() const
    {
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(sway.path(u"lines"_s)); }));
    }

    std::shared_ptr<PasteCoordinator> pasting = std::make_shared<PasteCoordinator>();
    std::unique_ptr<WaylandPasteboard> pasteboard;
    std::unique_ptr<WaylandKeyboardEvents> keyboard;
};

TEST_F(WaylandKeyboardEventsTest, pastesAndDeletesInTerminals)
{
    const std::pair<QString, QString> terminals[] = {
        {u"foot"_s, u"foot"_s},
        // By the primary selection, through the X server beside the compositor.
        {u"xterm -u8 -e"_s, u"XTerm"_s},
    };
    for (const auto &[command, name] : terminals) {
        SCOPED_TRACE(name.toStdString());
        QFile::remove(sway.path(u"lines"_s));
        open(command + keeper(), name);
        awaitKeeper();
        ASSERT_TRUE(paste(u"słowa 😀x"_s));
        EXPECT_TRUE(pasteboard->awaitPaste());
        EXPECT_TRUE(stroke(keyDelete, 0));
        EXPECT_TRUE(keyboard->awaitReceipt());
        ASSERT_TRUE(paste(u"!\n"_s));
        EXPECT_TRUE(pasteboard->awaitPaste());
        pasteboard->giveBack();
        EXPECT_TRUE(waitUntil([&] { return !lines().isEmpty(); }));
        EXPECT_EQ(lines(), "słowa 😀!\n");
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
