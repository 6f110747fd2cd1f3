#include "Platform/Linux/Wayland/Keyboard/WaylandKeyboardEvents.h"

#include "Platform/Linux/PasteStroke.h"

#include <linux/input-event-codes.h>
#include <thread>
#include <utility>

namespace Velloro {

namespace {

constexpr uint32_t keyV = 9;
constexpr uint32_t keyDelete = 51;

constexpr std::chrono::milliseconds receiptPatience{500};

} // namespace

WaylandKeyboardEvents::WaylandKeyboardEvents(std::shared_ptr<WaylandConnection> connection,
                                             std::unique_ptr<StrokeSender> sender,
                                             std::shared_ptr<WindowList> windows,
                                             std::shared_ptr<PasteCoordinator> pasting)
    : m_connection(std::move(connection))
    , m_sender(std::move(sender))
    , m_windows(std::move(windows))
    , m_pasting(std::move(pasting))
{
    m_pasting->join(*this);
    m_connection->flush();
}

WaylandKeyboardEvents::~WaylandKeyboardEvents()
{
    m_pasting->leave(*this);
    release();
}

bool WaylandKeyboardEvents::post(uint32_t keyCode, bool keyDown, uint64_t flags)
{
    if (!m_connection->isAlive())
        return false;
    if (keyDown)
        return press(keyCode, flags);
    if (!m_pressed || m_pressedKeyCode != keyCode)
        return false;
    release();
    return true;
}

void WaylandKeyboardEvents::pause(std::chrono::microseconds duration)
{
    std::this_thread::sleep_for(duration);
}

bool WaylandKeyboardEvents::press(uint32_t keyCode, uint64_t flags)
{
    release();
    m_pasting->awaitPaste();
    m_pressed = stroke(keyCode, flags);
    if (!m_pressed)
        return false;
    if (!m_sender->press(*m_pressed)) {
        m_pressed.reset();
        return false;
    }
    m_pressedKeyCode = keyCode;
    m_connection->flush();
    m_hasUnconfirmedStrokes = true;
    return true;
}

void WaylandKeyboardEvents::release()
{
    if (!m_pressed)
        return;
    m_sender->release(*std::exchange(m_pressed, std::nullopt));
    m_connection->flush();
}

std::optional<StrokeSender::Stroke> WaylandKeyboardEvents::stroke(uint32_t keyCode, uint64_t flags)
{
    if (keyCode == keyV && flags == commandFlag)
        return pasteStroke();
    if (keyCode == keyDelete && flags == 0)
        return StrokeSender::Stroke{.key = KEY_BACKSPACE};
    return std::nullopt;
}

std::optional<StrokeSender::Stroke> WaylandKeyboardEvents::pasteStroke()
{
    WindowList::Window target;
    if (m_windows && m_windows->isAlive()) {
        const auto window = m_windows->activeWindow();
        // The words would go nowhere.
        if (!window)
            return std::nullopt;
        target = *window;
    }
    const PasteStroke paste
        = Velloro::pasteStroke(target.windowClass, m_pasting->isTerminalFocused());
    if (!m_pasting->beginPaste({.window = target.number, .isOwn = target.isOwn()},
                               paste == PasteStroke::shiftInsert))
        return std::nullopt;
    switch (paste) {
    case PasteStroke::controlV:
        return StrokeSender::Stroke{.key = KEY_V, .isWithControl = true};
    case PasteStroke::controlShiftV:
        return StrokeSender::Stroke{.key = KEY_V, .isWithControl = true, .isWithShift = true};
    case PasteStroke::shiftInsert:
        return StrokeSender::Stroke{.key = KEY_INSERT, .isWithShift = true};
    }
    return std::nullopt;
}

bool WaylandKeyboardEvents::awaitReceipt()
{
    return !std::exchange(m_hasUnconfirmedStrokes, false) || !m_connection->isAlive()
        || m_connection->roundtrip(QDeadlineTimer(receiptPatience));
}

} // namespace Velloro
