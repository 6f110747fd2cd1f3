#include "Platform/Linux/Wayland/WaylandKeymap.h"

#include "Base/FileDescriptor.h"
#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"

#include <sys/mman.h>

namespace Velloro {

namespace {

/// A keyboard that is there is told of at once.
constexpr int patience = 300; // ms
/// A key of every keyboard.
constexpr xkb_keycode_t spaceBar = 65;

} // namespace

WaylandKeymap::WaylandKeymap(std::shared_ptr<WaylandConnection> display)
    : m_display(std::move(display))
    , m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    // A seat of its own: an object of the protocol has one listener.
    wl_seat *seat = m_display ? m_display->bind<wl_seat>(wl_seat_interface, 1) : nullptr;
    if (!seat)
        return;
    m_seat = {seat, {wl_seat_destroy}};
    static constexpr wl_seat_listener listener{
        .capabilities =
            [](void *data, wl_seat *, uint32_t capabilities) {
                static_cast<WaylandKeymap *>(data)->followKeyboard(capabilities
                                                                   & WL_SEAT_CAPABILITY_KEYBOARD);
            },
        .name = [](void *, wl_seat *, const char *) {},
    };
    wl_seat_add_listener(seat, &listener, this);
    const QDeadlineTimer deadline(patience);
    // The seat's keyboard is told with the first answer, its keymap with the second.
    if (m_display->roundtrip(deadline) && m_keyboard)
        m_display->roundtrip(deadline);
}

WaylandKeymap::WaylandKeymap(const QByteArray &text)
    : WaylandKeymap(std::shared_ptr<WaylandConnection>())
{
    readText(text.constData(), static_cast<size_t>(text.size()));
}

WaylandKeymap::~WaylandKeymap() = default;

void WaylandKeymap::followKeyboard(bool isThere)
{
    if (isThere == (m_keyboard != nullptr))
        return;
    m_keyboard.reset();
    if (!isThere)
        return;
    m_keyboard = {wl_seat_get_keyboard(m_seat.get()), {wl_keyboard_destroy}};
    static constexpr wl_keyboard_listener listener{
        .keymap =
            [](void *data, wl_keyboard *, uint32_t format, int32_t descriptor, uint32_t size) {
                static_cast<WaylandKeymap *>(data)->readFile(format, descriptor, size);
            },
        .enter = [](void *, wl_keyboard *, uint32_t, wl_surface *, wl_array *) {},
        .leave = [](void *, wl_keyboard *, uint32_t, wl_surface *) {},
        .key = [](void *, wl_keyboard *, uint32_t, uint32_t, uint32_t, uint32_t) {},
        .modifiers = [](void *, wl_keyboard *, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t) {},
        .repeat_info = [](void *, wl_keyboard *, int32_t, int32_t) {},
    };
    wl_keyboard_add_listener(m_keyboard.get(), &listener, this);
}

void WaylandKeymap::readFile(uint32_t format, int descriptor, uint32_t size)
{
    const FileDescriptor file(descriptor);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || size == 0)
        return;
    void *text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (text == MAP_FAILED)
        return;
    // The text ends with a zero.
    readText(static_cast<const char *>(text), size - 1);
    munmap(text, size);
}

void WaylandKeymap::readText(const char *text, size_t size)
{
    // It is told anew with each keyboard that is used in turn.
    if (m_text == QByteArrayView(text, static_cast<qsizetype>(size)))
        return;
    std::unique_ptr<xkb_keymap, CustomDelete<xkb_keymap_unref>> keymap(xkb_keymap_new_from_buffer(
        m_context.get(), text, size, XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
    // Programs make keyboards, too, with the few keys that they press.
    if (!keymap || xkb_keymap_num_layouts_for_key(keymap.get(), spaceBar) == 0)
        return;
    m_keymap = std::move(keymap);
    m_text = QByteArray(text, static_cast<qsizetype>(size));
    Q_EMIT changed();
}

std::vector<xkb_keysym_t> WaylandKeymap::keysyms(uint32_t virtualKeyCode, bool withShift) const
{
    std::vector<xkb_keysym_t> keysyms;
    const auto keycode = VirtualKeyMap::keycode(virtualKeyCode);
    if (!m_keymap || !keycode)
        return keysyms;
    for (xkb_layout_index_t layout = 0;
         layout < xkb_keymap_num_layouts_for_key(m_keymap.get(), *keycode); ++layout) {
        // Keys that Shift does nothing to have one level.
        const bool isSecond = withShift
            && xkb_keymap_num_levels_for_key(m_keymap.get(), *keycode, layout) > 1;
        const xkb_keysym_t *found = nullptr;
        if (xkb_keymap_key_get_syms_by_level(m_keymap.get(), *keycode, layout, isSecond ? 1 : 0,
                                             &found)
            == 1)
            keysyms.push_back(*found);
    }
    return keysyms;
}

} // namespace Velloro
