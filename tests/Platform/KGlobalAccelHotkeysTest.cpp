#include "Platform/Linux/Wayland/Hotkeys/KGlobalAccelHotkeys.h"

#include "Platform/HotkeyEvents.h"
#include "Platform/Linux/Wayland/Hotkeys/QtKeys.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/ScriptedService.h"
#include "Platform/WaylandKeyboard.h"

#include <QDBusArgument>

namespace Velloro {
namespace {

using ::testing::ElementsAre;

/// KDE's service, with combinations that somebody else has.
class KGlobalAccel : public ScriptedService
{
public:
    KGlobalAccel()
        : ScriptedService(u"org.kde.kglobalaccel"_s)
    {
    }

    void tell(const QString &what, const QString &action = u"dictate"_s)
    {
        emitSignal(u"/component/velloro"_s, u"org.kde.kglobalaccel.Component"_s,
                   u"globalShortcut"_s + what, {u"velloro"_s, action, qlonglong(7)});
    }

    QList<int> taken;
    QList<int> keys;
    bool isBlocked = true;

protected:
    bool answer(const QDBusMessage &message) override
    {
        if (message.member() == u"setShortcut") {
            keys = qdbus_cast<QList<int>>(message.arguments().value(1));
            for (int &key : keys)
                key = taken.contains(key) ? 0 : key;
            bus.send(message.createReply(QVariant::fromValue(keys)));
        } else {
            if (message.member() == u"blockGlobalShortcuts")
                isBlocked = message.arguments().value(0).toBool();
            bus.send(message.createReply());
        }
        return true;
    }
};

class KGlobalAccelHotkeysTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDBusConnection::sessionBus().isConnected())
            GTEST_SKIP() << "needs a session bus";
    }
    /// Whether KDE is there.
    bool look()
    {
        std::optional<bool> isOffered;
        hotkeys = std::make_unique<KGlobalAccelHotkeys>(
            std::make_shared<WaylandKeymap>(keymapText("us,de,ru")), QDBusConnection::sessionBus());
        events.follow(*hotkeys);
        hotkeys->look([&](bool offered) { isOffered = offered; });
        EXPECT_TRUE(waitUntil([&] { return isOffered.has_value(); }));
        return isOffered.value_or(false);
    }

    KGlobalAccel kde;
    HotkeyEvents events;
    std::unique_ptr<KGlobalAccelHotkeys> hotkeys;
    static constexpr KeyCombination altSpace{49, ClassicMask::option};
};

TEST_F(KGlobalAccelHotkeysTest, tellsOnePressForAllRepetitions)
{
    EXPECT_FALSE(look());
    ASSERT_TRUE(kde.start());
    EXPECT_TRUE(look());
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    EXPECT_THAT(kde.keys, ElementsAre(0x08000020));
    for (const char16_t *what : {u"Pressed", u"Pressed", u"Released", u"Released"})
        kde.tell(QString::fromUtf16(what));
    kde.tell(u"Pressed"_s, u"another"_s);
    kde.tell(u"Pressed"_s);
    EXPECT_TRUE(events.become(u"press, release, press"));
    // Its service is started again, in the middle of a press.
    kde.stop();
    EXPECT_TRUE(events.become(u"release"));
    ASSERT_TRUE(kde.start());
    EXPECT_TRUE(events.become(u"status 0"));
    kde.calls.clear();
    hotkeys.reset();
    EXPECT_TRUE(waitUntil([this] { return kde.calls == QStringList(u"unregister"_s); }));
}

TEST_F(KGlobalAccelHotkeysTest, asksForTheKeyAsEachLayoutHasIt)
{
    ASSERT_TRUE(kde.start());
    ASSERT_TRUE(look());
    kde.taken = {0x0c000000 | 'Z'};
    hotkeys->bind({6, ClassicMask::option | ClassicMask::control});
    EXPECT_TRUE(events.become(u"status 10"));
    // It is enough to have it in the first layout.
    kde.taken = {0x0c000000 | 'Y'};
    hotkeys->bind({6, ClassicMask::option | ClassicMask::control});
    EXPECT_TRUE(events.become(u"status 0"));
    EXPECT_THAT(kde.keys, ElementsAre(0x0c000000 | 'Z', 0, 0x0c000000 | 0x42f));
    hotkeys->bind({1000, 0});
    EXPECT_TRUE(events.become(u"status 2"));
}

TEST_F(KGlobalAccelHotkeysTest, blocksShortcutsWhileACombinationIsRecorded)
{
    ASSERT_TRUE(kde.start());
    ASSERT_TRUE(look());
    EXPECT_TRUE(waitUntil([this] { return !kde.isBlocked; }))
        << "left behind by one that was killed";
    auto through = hotkeys->letShortcutsThrough();
    EXPECT_TRUE(waitUntil([this] { return kde.isBlocked; }));
    through.reset();
    EXPECT_TRUE(waitUntil([this] { return !kde.isBlocked; }));
}

TEST(QtKeysTest, followTheLayouts)
{
    const WaylandKeymap keymap(keymapText("us,de"));
    constexpr int shift = 0x02000000;
    constexpr int control = 0x04000000;
    constexpr int super = 0x10000000;
    const struct
    {
        KeyCombination combination;
        QList<int> expected;
    } cases[] = {
        {{2, ClassicMask::shift}, {shift | 'D'}},
        {{18, ClassicMask::shift | ClassicMask::command}, {super | shift | '1', super | '!'}},
        {{26, ClassicMask::shift}, {shift | '7', '&', '/'}},
        {{96, 0}, {Qt::Key_F5}},
        {{48, ClassicMask::control}, {control | Qt::Key_Tab}},
        {{117, 0}, {Qt::Key_Delete}},
        {{39, 0}, {'\'', 0xc4}},
        {{58, 0}, {}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(QtKeys::combinations(c.combination, keymap), c.expected) << c.combination.keyCode;
}

} // namespace
} // namespace Velloro
