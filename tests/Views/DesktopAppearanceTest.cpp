#include "Platform/Linux/Desktop/DesktopAppearance.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Wayland/WaylandDesktopLook.h"
#include "Platform/Linux/X11/X11DesktopLook.h"
#include "Support/WaitUntil.h"
#include "Views/Controls/Theme.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <gmock/gmock.h>
#include <xcb/xcb.h>

namespace Velloro {

/// A colour as the portal sends it.
struct PortalColor
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const PortalColor &color)
{
    argument.beginStructure();
    argument << color.red << color.green << color.blue;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalColor &color)
{
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    return argument;
}

} // namespace Velloro

Q_DECLARE_METATYPE(Velloro::PortalColor)

namespace Velloro {

namespace {

using Groups = QMap<QString, QVariantMap>;

const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString interfaceGroup = u"org.gnome.desktop.interface"_s;

/// The desktop portal's settings, on a connection of its own.
class Portal : public QDBusVirtualObject
{
public:
    Portal()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s))
    {
        qDBusRegisterMetaType<PortalColor>();
        qDBusRegisterMetaType<Groups>();
        m_bus.registerVirtualObject(u"/org/freedesktop/portal/desktop"_s, this);
        m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }

    Groups groups;

    void change(const QString &group, const QString &key, const QVariant &value)
    {
        QDBusMessage signal = QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_s,
                                                         u"org.freedesktop.portal.Settings"_s,
                                                         u"SettingChanged"_s);
        signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(value))});
        m_bus.send(signal);
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() != u"ReadAll"_s)
            return false;
        connection.send(message.createReply(QVariant::fromValue(groups)));
        return true;
    }

private:
    QDBusConnection m_bus;
};

std::unique_ptr<DesktopAppearance> makeAppearance()
{
    return std::make_unique<DesktopAppearance>(
        std::make_unique<X11DesktopLook>(X11Connection::open()));
}

TEST(DesktopAppearanceTest, IsBlendedWithTextOfItsOwnSizeOnACompositor)
{
    Portal portal;
    portal.groups = {{interfaceGroup, {{u"text-scaling-factor"_s, 0.5}}}};
    const DesktopAppearance appearance(std::make_shared<WaylandDesktopLook>(nullptr, true));
    EXPECT_TRUE(appearance.isCompositing());
    EXPECT_TRUE(appearance.isTrayDark()) << "though windows are light";
    // Windows twice as large as the text are no sign that they have its factor already.
    EXPECT_TRUE(waitUntil([&] { return appearance.textScale() == 0.5; }));
    const auto x11 = makeAppearance();
    QSignalSpy changes(x11.get(), &Appearance::changed);
    ASSERT_TRUE(waitUntil([&] { return changes.count() > 0; }));
    EXPECT_EQ(x11->textScale(), 1);
}

TEST(DesktopAppearanceTest, FollowsThePortal)
{
    Portal portal;
    portal.groups
        = {{appearanceGroup,
            {{u"color-scheme"_s, 1U},
             {u"accent-color"_s, QVariant::fromValue(PortalColor{1, 0.5, 0})}}},
           {interfaceGroup, {{u"color-scheme"_s, u"default"_s}, {u"text-scaling-factor"_s, 1.25}}}};
    const auto appearance = makeAppearance();
    EXPECT_FALSE(appearance->prefersDark()) << "nothing waits for the portal";
    ASSERT_TRUE(waitUntil([&] { return appearance->prefersDark(); }));
    EXPECT_EQ(appearance->accentColor(), 0xff8000U);
    EXPECT_EQ(appearance->textScale(), 1.25);
    EXPECT_TRUE(appearance->isTrayDark()) << "a tray that does not tell goes with the desktop";

    Theme theme(*appearance);
    QSignalSpy themeChanges(&theme, &Theme::changed);
    EXPECT_EQ(theme.accent(), QColor(0xff, 0x80, 0));
    EXPECT_EQ(theme.body().pixelSize(), 16);
    portal.change(appearanceGroup, u"color-scheme"_s, 2U);
    ASSERT_TRUE(waitUntil([&] { return !appearance->prefersDark(); }));
    portal.change(appearanceGroup, u"accent-color"_s, QVariant::fromValue(PortalColor{-1, -1, -1}));
    ASSERT_TRUE(waitUntil([&] { return !appearance->accentColor(); }));
    portal.change(interfaceGroup, u"text-scaling-factor"_s, 1.0);
    ASSERT_TRUE(waitUntil([&] { return theme.body().pixelSize() == 13; }));
    EXPECT_EQ(themeChanges.count(), 3);

    // What changes nothing, and what is not understood, is not told.
    portal.change(appearanceGroup, u"color-scheme"_s, 2U);
    portal.change(appearanceGroup, u"accent-color"_s, u"no colour"_s);
    portal.change(interfaceGroup, u"text-scaling-factor"_s, -3.0);
    portal.change(u"org.example"_s, u"color-scheme"_s, 1U);
    EXPECT_FALSE(themeChanges.wait(300));
}

TEST(DesktopAppearanceTest, FollowsTheSettingsStoreWhereThereIsNoPortal)
{
    const QString gsettings = QStandardPaths::findExecutable(u"gsettings"_s);
    const auto set = [&](const QString &key, const QString &value) {
        QProcess process;
        process.start(gsettings, {u"set"_s, interfaceGroup, key, value});
        return process.waitForFinished() && process.exitCode() == 0;
    };
    if (gsettings.isEmpty() || !set(u"color-scheme"_s, u"prefer-dark"_s))
        GTEST_SKIP() << "no settings store of the GTK desktops";
    const auto appearance = makeAppearance();
    ASSERT_TRUE(waitUntil([&] { return appearance->prefersDark(); }));
    // The watch starts some time after the first answer; a change before that is not seen.
    bool isWatched = false;
    for (int attempt = 0; attempt < 40 && !isWatched; ++attempt) {
        const QString scale = attempt % 2 == 0 ? u"1.5"_s : u"1.25"_s;
        ASSERT_TRUE(set(u"text-scaling-factor"_s, scale));
        isWatched = waitUntil([&] { return appearance->textScale() == scale.toDouble(); },
                              std::chrono::milliseconds(500));
    }
    EXPECT_TRUE(isWatched);
    ASSERT_TRUE(set(u"color-scheme"_s, u"prefer-light"_s));
    EXPECT_TRUE(waitUntil([&] { return !appearance->prefersDark(); }));
}

TEST(DesktopAppearanceTest, KnowsWhichTextScaleWindowsHaveAlready)
{
    const struct
    {
        double text;
        double ratio;
        double remaining;
    } cases[] = {{1, 1, 1},       {1.25, 1, 1.25}, {1.25, 1.25, 1}, {1.25, 2.5, 1},
                 {1.25, 2, 1.25}, {1, 1.5, 1},     {1.5, 1.5, 1},   {0.9, 0.9, 1}};
    for (const auto &c : cases)
        EXPECT_EQ(DesktopAppearance::remainingTextScale(c.text, c.ratio), c.remaining)
            << c.text << " at " << c.ratio;
}

TEST(DesktopAppearanceTest, FollowsCompositingManagerAndTray)
{
    const auto server = X11Connection::open();
    if (!server)
        GTEST_SKIP() << "no X server";
    X11DesktopLook look(X11Connection::open());
    if (look.isCompositing() || look.isTrayDark())
        GTEST_SKIP() << "this desktop has a compositing manager or a tray already";

    // A manager owns a selection by a window, may announce it, and ends with the window.
    xcb_connection_t *xcb = server->xcb();
    const auto start = [&](const QByteArray &selection, bool announces = true) {
        const xcb_window_t window = xcb_generate_id(xcb);
        xcb_create_window(xcb, 0, window, server->root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        const auto setColors = [server, xcb, window](uint32_t foreground) {
            std::array<uint32_t, 12> colors{};
            colors.fill(foreground);
            xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window,
                                server->atom("_NET_SYSTEM_TRAY_COLORS"), XCB_ATOM_CARDINAL, 32,
                                colors.size(), colors.data());
            server->flush();
        };
        setColors(0xffff);
        xcb_set_selection_owner(xcb, window, server->atom(selection), XCB_CURRENT_TIME);
        xcb_client_message_event_t announcement{};
        announcement.response_type = XCB_CLIENT_MESSAGE;
        announcement.format = 32;
        announcement.window = server->root();
        announcement.type = server->atom("MANAGER");
        announcement.data.data32[1] = server->atom(selection);
        announcement.data.data32[2] = window;
        if (announces)
            xcb_send_event(xcb, 0, server->root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                           reinterpret_cast<const char *>(&announcement));
        server->flush();
        return std::pair(window, setColors);
    };

    // One that neither announces itself nor ends with its window, as they exist.
    const QByteArray compositing = "_NET_WM_CM_S0";
    (void)start(compositing, false);
    EXPECT_TRUE(waitUntil([&] { return look.isCompositing(); }));
    xcb_set_selection_owner(xcb, XCB_WINDOW_NONE, server->atom(compositing), XCB_CURRENT_TIME);
    server->flush();
    EXPECT_TRUE(waitUntil([&] { return !look.isCompositing(); }));

    const auto [compositor, unused] = start(compositing);
    EXPECT_TRUE(waitUntil([&] { return look.isCompositing(); }));
    EXPECT_FALSE(look.isTrayDark());
    const auto [tray, setTrayColors] = start("_NET_SYSTEM_TRAY_S0");
    EXPECT_TRUE(waitUntil([&] { return look.isTrayDark() == true; })) << "white symbols, dark tray";
    setTrayColors(0x1000);
    EXPECT_TRUE(waitUntil([&] { return look.isTrayDark() == false; }));
    for (const xcb_window_t window : {compositor, tray})
        xcb_destroy_window(xcb, window);
    server->flush();
    EXPECT_TRUE(waitUntil([&] { return !look.isCompositing() && !look.isTrayDark(); }));
}

} // namespace
} // namespace Velloro
