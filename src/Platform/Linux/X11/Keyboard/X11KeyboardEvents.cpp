#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"

#include "Platform/Linux/PasteStroke.h"
#include "Platform/Linux/X11/Keyboard/X11ModifierTap.h"

#include <algorithm>
#include <ranges>
#include <thread>
#include <unistd.h>
#include <utility>
#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace Velloro {

namespace {

constexpr uint32_t keyV = 9;
constexpr uint32_t keyDelete = 51;
constexpr uint32_t keyInsert = 114;

constexpr std::chrono::milliseconds receiptPatience{500};

} // namespace

X11KeyboardEvents::X11KeyboardEvents(std::shared_ptr<X11Connection> connection,
                                     std::shared_ptr<PasteCoordinator> pasting)
    : m_connection(std::move(connection))
    , m_pasting(std::move(pasting))
{
    m_pasting->join(*this);
    if (!m_connection)
        return;
    m_keyboards = std::make_unique<X11Keyboards>(m_connection);
    m_keymapInForce = std::make_unique<X11Keymap>(m_connection);
    const auto synthetic = m_keyboards->syntheticKeyboard();
    m_keymap = synthetic ? std::make_unique<X11Keymap>(m_connection, *synthetic)
                         : std::make_unique<X11Keymap>(m_connection);
    m_workspace = std::make_unique<X11Workspace>(m_connection);
    connect(m_connection.get(), &X11Connection::eventReceived, this,
            &X11KeyboardEvents::handleEvent);
}

X11KeyboardEvents::~X11KeyboardEvents()
{
    m_pasting->leave(*this);
    if (!m_connection || !m_connection->isAlive())
        return;
    release();
    dropRestoredModifiers();
}

bool X11KeyboardEvents::post(uint32_t keyCode, bool keyDown, uint64_t flags)
{
    if (!m_connection || !m_connection->isAlive() || !m_connection->hasXTest())
        return false;
    if (keyDown)
        return press(keyCode, flags);
    if (!m_pressed || m_pressedKeyCode != keyCode)
        return false;
    release();
    return true;
}

void X11KeyboardEvents::pause(std::chrono::microseconds duration)
{
    std::this_thread::sleep_for(duration);
}

bool X11KeyboardEvents::press(uint32_t keyCode, uint64_t flags)
{
    release();
    m_pasting->awaitPaste();
    // A new layout may be known to the connection already.
    m_connection->dispatchPending();
    m_pressed = chord(keyCode, flags);
    if (!m_pressed)
        return false;

    liftModifiers();
    if (m_pressed->locks != 0)
        m_keyboards->lockModifiers(m_pressed->locks, false);
    // A key that is down already would not go down again.
    const KeySet held = m_keyboards->logicallyHeld();
    for (const uint8_t key : m_pressed->keys) {
        if (held[key])
            m_keyboards->fakeKey(key, false);
        m_keyboards->fakeKey(key, true);
    }
    m_pressedKeyCode = keyCode;
    m_hasUnconfirmedStrokes = true;
    return true;
}

bool X11KeyboardEvents::awaitReceipt()
{
    if (!std::exchange(m_hasUnconfirmedStrokes, false) || !m_connection->isAlive())
        return true;
    const xcb_window_t window = othersWindow();
    if (window == XCB_WINDOW_NONE || !m_workspace->answersPings(window))
        return true;

    // The window takes its events in order and sends a ping on to the root window.
    xcb_connection_t *xcb = m_connection->xcb();
    const auto selectRootEvents = [&](uint32_t events) {
        xcb_change_window_attributes(xcb, m_connection->root(), XCB_CW_EVENT_MASK, &events);
    };
    selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    union {
        xcb_client_message_event_t event;
        char padding[32];
    } ping{};
    ping.event.response_type = XCB_CLIENT_MESSAGE;
    ping.event.format = 32;
    ping.event.window = window;
    ping.event.type = m_connection->atom("WM_PROTOCOLS");
    ping.event.data.data32[0] = m_connection->atom("_NET_WM_PING");
    ping.event.data.data32[1] = ++m_pings;
    ping.event.data.data32[2] = window;
    xcb_send_event(xcb, 0, window, XCB_EVENT_MASK_NO_EVENT, ping.padding);
    m_isPingAnswered = false;
    m_connection->dispatchUntil([this] { return m_isPingAnswered; },
                                QDeadlineTimer(receiptPatience));
    selectRootEvents(XCB_EVENT_MASK_NO_EVENT);
    m_connection->flush();
    return m_isPingAnswered;
}

xcb_window_t X11KeyboardEvents::othersWindow()
{
    const auto application = m_workspace->frontmostApplication();
    if (application && application->processIdentifier == getpid())
        return XCB_WINDOW_NONE;
    return m_workspace->activeWindow();
}

void X11KeyboardEvents::release()
{
    if (!m_pressed)
        return;
    const Chord pressed = *std::exchange(m_pressed, std::nullopt);
    for (const uint8_t key : std::views::reverse(pressed.keys))
        m_keyboards->fakeKey(key, false);
    if (pressed.locks != 0)
        m_keyboards->lockModifiers(pressed.locks, true);
    restoreModifiers();
}

std::optional<X11KeyboardEvents::Chord> X11KeyboardEvents::chord(uint32_t keyCode, uint64_t flags)
{
    if (keyCode == keyV && flags == commandFlag)
        return pasteChord();

    std::optional<uint8_t> key = m_keymap->keycodeAt(keyCode);
    if (keyCode == keyDelete)
        key = m_keymap->keycodeFor(XKB_KEY_BackSpace, key.value_or(0));
    if (!key)
        return std::nullopt;

    std::vector<uint16_t> masks;
    constexpr std::pair<uint64_t, uint32_t> modifiers[]
        = {{EventFlag::command, ClassicMask::command},
           {EventFlag::control, ClassicMask::control},
           {EventFlag::option, ClassicMask::option},
           {EventFlag::shift, ClassicMask::shift}};
    for (const auto &[flag, classic] : modifiers) {
        if (!(flags & flag))
            continue;
        const auto mask = m_keymap->modifierMask(classic);
        if (!mask)
            return std::nullopt;
        masks.push_back(*mask);
    }
    return chord(masks, *key);
}

std::optional<X11KeyboardEvents::Chord>
X11KeyboardEvents::chord(std::span<const uint16_t> modifiers, uint8_t key)
{
    const KeyboardLocks locks = m_keymap->locks();
    // A locked Shift would be in every stroke, and Shift may be the key that ends Caps Lock.
    const uint8_t inTheWay = locks.modifiers & ~m_keymap->lockModifiers();
    const uint8_t capsLock = locks.modifiers & XCB_MOD_MASK_LOCK;
    for (const uint8_t lifted : {inTheWay, static_cast<uint8_t>(inTheWay | capsLock)}) {
        const uint8_t left = locks.modifiers & ~lifted;
        if (auto keys = m_keymap->modifierKeys(modifiers, {left, locks.layout})) {
            keys->push_back(key);
            return Chord{std::move(*keys), lifted};
        }
    }
    return std::nullopt;
}

std::optional<X11KeyboardEvents::Chord> X11KeyboardEvents::pasteChord()
{
    PasteStroke stroke = pasteStroke(m_workspace->activeWindowClass().value_or(WindowClass{}),
                                     m_pasting->isTerminalFocused());
    auto result = chord(stroke);
    if (!result) {
        // Shift+Insert needs no letter, and both selections hold the text then.
        stroke = PasteStroke::shiftInsert;
        result = chord(stroke);
    }
    if (!result)
        return std::nullopt;
    const bool mayPaste = m_pasting->beginPaste(
        {.window = m_workspace->activeWindow(), .isOwn = othersWindow() == XCB_WINDOW_NONE},
        stroke == PasteStroke::shiftInsert);
    return mayPaste ? result : std::nullopt;
}

std::optional<X11KeyboardEvents::Chord> X11KeyboardEvents::chord(PasteStroke stroke)
{
    constexpr uint16_t control[] = {XCB_MOD_MASK_CONTROL};
    constexpr uint16_t controlShift[] = {XCB_MOD_MASK_CONTROL, XCB_MOD_MASK_SHIFT};
    constexpr uint16_t shift[] = {XCB_MOD_MASK_SHIFT};
    const uint8_t usualV = m_keymap->keycodeAt(keyV).value_or(0);
    std::optional<uint8_t> key;
    std::span<const uint16_t> modifiers;
    switch (stroke) {
    case PasteStroke::controlV:
        // With a layout that has no v, applications take the shortcut by another layout's.
        key = m_keymap->keycodeFor(XKB_KEY_v, usualV);
        modifiers = control;
        break;
    case PasteStroke::controlShiftV:
        // Some terminals do not.
        key = m_keymap->keycodeInLayout(XKB_KEY_v, usualV);
        modifiers = controlShift;
        break;
    case PasteStroke::shiftInsert:
        key = m_keymap->keycodeFor(XKB_KEY_Insert, m_keymap->keycodeAt(keyInsert).value_or(0));
        modifiers = shift;
        break;
    }
    return key ? chord(modifiers, *key) : std::nullopt;
}

void X11KeyboardEvents::liftModifiers()
{
    const KeySet modifiers = m_keymapInForce->heldModifierKeys();
    m_lifted = m_keyboards->logicallyHeld() & modifiers;
    if (m_lifted.any())
        breakModifierTap(*m_keymapInForce, *m_keymap, *m_keyboards);
    // The restored ones are pressed on the device of synthetic strokes, whoever else holds them.
    const KeySet released = m_lifted | std::exchange(m_restored, {});
    for (size_t key = 0; key < released.size(); ++key) {
        if (released[key])
            m_keyboards->fakeKey(static_cast<uint8_t>(key), false);
    }
}

void X11KeyboardEvents::restoreModifiers()
{
    const KeySet lifted = std::exchange(m_lifted, {});
    // A key may be something else on the device of synthetic strokes.
    if (lifted.any()) {
        m_restored = lifted & m_keyboards->physicallyHeld() & m_keymap->heldModifierKeys();
    }
    for (size_t key = 0; key < m_restored.size(); ++key) {
        if (m_restored[key])
            m_keyboards->fakeKey(static_cast<uint8_t>(key), true);
    }
    if (m_restored.none()) {
        m_connection->removeInputEvents(XCB_INPUT_DEVICE_ALL,
                                        XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);
        return;
    }
    breakModifierTap(*m_keymap, *m_keymap, *m_keyboards);
    m_connection->addInputEvents(XCB_INPUT_DEVICE_ALL, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);
    // The user may have let go in between; then nobody else would release it.
    dropRestoredModifiers();
}

void X11KeyboardEvents::dropRestoredModifiers()
{
    if (m_restored.none())
        return;
    const KeySet dropped = m_restored & ~m_keyboards->physicallyHeld();
    m_restored &= ~dropped;
    if (m_restored.none()) {
        m_connection->removeInputEvents(XCB_INPUT_DEVICE_ALL,
                                        XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);
    }
    for (size_t key = 0; key < dropped.size(); ++key) {
        if (dropped[key])
            m_keyboards->fakeKey(static_cast<uint8_t>(key), false);
    }
}

void X11KeyboardEvents::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
        const auto *message = reinterpret_cast<const xcb_client_message_event_t *>(event);
        if (message->window == m_connection->root() && message->data.data32[1] == m_pings
            && message->data.data32[0] == m_connection->atom("_NET_WM_PING"))
            m_isPingAnswered = true;
        return;
    }
    if (m_restored.none() || (event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event);
    if (generic->extension == m_connection->inputOpcode()
        && generic->event_type == XCB_INPUT_RAW_KEY_RELEASE && !m_pressed)
        dropRestoredModifiers();
}

} // namespace Velloro
