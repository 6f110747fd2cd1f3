#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"

#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"
#include "Platform/Linux/X11/Keyboard/X11Keymap.h"
#include "Platform/ModifierKeys.h"

#include <QGuiApplication>
#include <QHash>
#include <QKeyEvent>
#include <QPointer>
#include <QWindow>
#include <utility>

namespace Velloro {

namespace {

/// A key that is a modifier in the live layout, and its flag; 0 for those without one.
std::optional<uint32_t> modifierFlag(quint32 keysym)
{
    switch (keysym) {
    case 0xffe1: // Shift_L
    case 0xffe2: // Shift_R
        return EventFlag::shift;
    case 0xffe3: // Control_L
    case 0xffe4: // Control_R
        return EventFlag::control;
    case 0xffe7: // Meta_L, which is Alt with Shift held
    case 0xffe8: // Meta_R
    case 0xffe9: // Alt_L
    case 0xffea: // Alt_R
        return EventFlag::option;
    case 0xffeb: // Super_L
    case 0xffec: // Super_R
    case 0xffed: // Hyper_L
    case 0xffee: // Hyper_R
        return EventFlag::command;
    case 0xff7e: // Mode_switch
    case 0xff7f: // Num_Lock
    case 0xffe5: // Caps_Lock
    case 0xffe6: // Shift_Lock
        return 0;
    default:
        break;
    }
    // ISO_Lock to ISO_Last_Group_Lock: the third level and the like.
    return keysym >= 0xfe01 && keysym <= 0xfe13 ? std::optional<uint32_t>(0) : std::nullopt;
}

uint32_t flags(Qt::KeyboardModifiers modifiers)
{
    return (modifiers.testFlag(Qt::MetaModifier) ? EventFlag::command : 0)
        | (modifiers.testFlag(Qt::AltModifier) ? EventFlag::option : 0)
        | (modifiers.testFlag(Qt::ControlModifier) ? EventFlag::control : 0)
        | (modifiers.testFlag(Qt::ShiftModifier) ? EventFlag::shift : 0);
}

class KeyEventFilter final : public QObject, public KeyEventMonitor::Monitor
{
public:
    KeyEventFilter(KeyEventMonitor::Handler handler, WindowKeyEvents::Desktop desktop)
        : m_handler(std::move(handler))
        , m_desktop(std::move(desktop))
        , m_shortcuts(m_desktop.letShortcutsThrough ? m_desktop.letShortcutsThrough() : nullptr)
    {
        qGuiApp->installEventFilter(this);
        connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &KeyEventFilter::grab);
        grab(QGuiApplication::focusWindow());
    }

    ~KeyEventFilter() override
    {
        if (m_window)
            m_window->setKeyboardGrabEnabled(false);
        qGuiApp->removeEventFilter(this);
    }

    [[nodiscard]] bool seesDesktopShortcuts() const override
    {
        return m_desktop.canGrab || m_shortcuts;
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ShortcutOverride) {
            // Accepted, it comes back as a key press instead of setting off a shortcut.
            event->accept();
            return true;
        }
        // The window passes its events on to its items, which are objects of their own.
        if (!watched->isWindowType())
            return false;
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease: {
            const auto &keyEvent = *static_cast<QKeyEvent *>(event);
            if (keyEvent.isAutoRepeat())
                return true;
            auto told = WindowKeyEvents::keyEvent(keyEvent);
            if (told) {
                if (told->type == KeyEvent::Type::flagsChanged)
                    told->modifierFlags |= heldByOtherKeys(keyEvent);
                else
                    told->hasOtherModifier = m_desktop.holdsOtherModifier
                        && m_desktop.holdsOtherModifier(keyEvent.nativeModifiers());
                return m_handler(*told);
            }
            // A key without a known position can't be had as a combination.
            return event->type() == QEvent::KeyPress;
        }
        default:
            return false;
        }
    }

private:
    /// Keeps the keys from the desktop as well, once a window of ours has the focus.
    void grab(QWindow *window)
    {
        if (m_window || !window || !m_desktop.canGrab)
            return;
        m_window = window;
        m_window->setKeyboardGrabEnabled(true);
    }

    /// What other modifier keys hold: of two Shift keys, the one that stays down holds Shift.
    uint32_t heldByOtherKeys(const QKeyEvent &event)
    {
        // A release that was not seen leaves a key behind; the state before the event knows better.
        const uint32_t heldBefore = flags(event.QInputEvent::modifiers());
        m_heldModifiers.removeIf([&](const std::pair<const quint32 &, uint32_t &> &held) {
            return held.first == event.nativeScanCode() || !(heldBefore & held.second);
        });
        uint32_t result = 0;
        for (const uint32_t flag : std::as_const(m_heldModifiers))
            result |= flag;
        if (event.type() == QEvent::KeyPress) {
            if (const uint32_t flag = modifierFlag(event.nativeVirtualKey()).value_or(0))
                m_heldModifiers.insert(event.nativeScanCode(), flag);
        }
        return result;
    }

    KeyEventMonitor::Handler m_handler;
    WindowKeyEvents::Desktop m_desktop;
    std::shared_ptr<void> m_shortcuts;
    QPointer<QWindow> m_window;
    /// The modifier keys that were pressed and are down, by their place, and their flags.
    QHash<quint32, uint32_t> m_heldModifiers;
};

WindowKeyEvents::Desktop x11Desktop(const std::shared_ptr<X11Connection> &connection)
{
    WindowKeyEvents::Desktop desktop;
    desktop.canGrab = true;
    if (connection) {
        desktop.holdsOtherModifier
            = [keymap = std::make_shared<X11Keymap>(connection)](uint32_t nativeModifiers) {
                  return keymap->holdsOtherModifier(static_cast<uint8_t>(nativeModifiers));
              };
    }
    return desktop;
}

} // namespace

WindowKeyEvents::WindowKeyEvents(Desktop desktop)
    : m_desktop(std::move(desktop))
{
}

WindowKeyEvents::WindowKeyEvents(const std::shared_ptr<X11Connection> &connection)
    : WindowKeyEvents(x11Desktop(connection))
{
}

WindowKeyEvents::~WindowKeyEvents() = default;

std::unique_ptr<KeyEventMonitor::Monitor> WindowKeyEvents::addLocalMonitor(Handler handler)
{
    return std::make_unique<KeyEventFilter>(std::move(handler), m_desktop);
}

std::optional<KeyEvent> WindowKeyEvents::keyEvent(const QKeyEvent &event)
{
    const uint32_t keyCode = VirtualKeyMap::virtualKeyCode(event.nativeScanCode()).value_or(0);
    const bool isPress = event.type() == QEvent::KeyPress;
    // The state before the event; the key event's own idea of it goes by the key's meaning, which
    // Shift changes for some modifiers.
    uint32_t held = flags(event.QInputEvent::modifiers());
    if (const auto flag = modifierFlag(event.nativeVirtualKey())) {
        held = isPress ? held | *flag : held & ~*flag;
        return KeyEvent{KeyEvent::Type::flagsChanged, keyCode, held, false};
    }
    if (!isPress || !VirtualKeyMap::virtualKeyCode(event.nativeScanCode()))
        return std::nullopt;
    return KeyEvent{KeyEvent::Type::keyDown, keyCode, held, false};
}

} // namespace Velloro
