#include "Platform/Linux/X11/Keyboard/X11Keymap.h"

#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"
#include "Platform/Linux/X11/Keyboard/XcbKeyboardExtension.h"
#include "Platform/Linux/X11/XcbReply.h"
#include "Platform/ModifierKeys.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <span>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace Velloro {

namespace {

constexpr std::initializer_list<xkb_keysym_t> lockSymbols
    = {XKB_KEY_Caps_Lock,   XKB_KEY_Shift_Lock,      XKB_KEY_Num_Lock,
       XKB_KEY_Scroll_Lock, XKB_KEY_ISO_Level3_Lock, XKB_KEY_ISO_Level5_Lock};

std::span<const xkb_keysym_t> symbols(xkb_keymap *keymap, uint8_t keycode, xkb_layout_index_t group,
                                      xkb_level_index_t level)
{
    const xkb_keysym_t *found = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, keycode, group, level, &found);
    return {found, static_cast<size_t>(std::max(count, 0))};
}

/// Those of every group and level.
std::vector<xkb_keysym_t> allSymbols(xkb_keymap *keymap, uint8_t keycode)
{
    std::vector<xkb_keysym_t> all;
    const auto groups = xkb_keymap_num_layouts_for_key(keymap, keycode);
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        const auto levels = xkb_keymap_num_levels_for_key(keymap, keycode, group);
        for (xkb_level_index_t level = 0; level < levels; ++level)
            std::ranges::copy(symbols(keymap, keycode, group, level), std::back_inserter(all));
    }
    return all;
}

} // namespace

X11Keymap::X11Keymap(std::shared_ptr<X11Connection> connection)
    : X11Keymap(std::move(connection), XCB_XKB_ID_USE_CORE_KBD)
{
}

X11Keymap::X11Keymap(std::shared_ptr<X11Connection> connection, uint16_t device)
    : m_connection(std::move(connection))
    , m_device(device)
{
    m_connection->addKeymapEvents(device);
    connect(m_connection.get(), &X11Connection::eventReceived, this, &X11Keymap::handleEvent);
}

X11Keymap::~X11Keymap() = default;

void X11Keymap::handleEvent(const xcb_generic_event_t *event)
{
    const uint8_t type = event->response_type & 0x7f;
    const bool isKeyboardEvent = m_connection->keyboardEventBase() != 0
        && type == m_connection->keyboardEventBase()
        && (event->pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event->pad0 == XCB_XKB_MAP_NOTIFY);
    if (isKeyboardEvent || type == XCB_MAPPING_NOTIFY) {
        m_keymap.reset();
        Q_EMIT changed();
    }
}

bool X11Keymap::load()
{
    if (m_keymap)
        return true;
    if (!m_connection->isAlive() || m_connection->keyboardEventBase() == 0)
        return false;

    xcb_connection_t *xcb = m_connection->xcb();
    const std::unique_ptr<xkb_context, CustomDelete<xkb_context_unref>> context(
        xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
    const int32_t device
        = m_device == XCB_XKB_ID_USE_CORE_KBD ? xkb_x11_get_core_keyboard_device_id(xcb) : m_device;
    if (context && device >= 0 && loadModifierMap(static_cast<uint16_t>(device))) {
        m_keymap.reset(xkb_x11_keymap_new_from_device(context.get(), xcb, device,
                                                      XKB_KEYMAP_COMPILE_NO_FLAGS));
    }
    return m_keymap != nullptr;
}

bool X11Keymap::loadModifierMap(uint16_t device)
{
    m_modifierMap = {};
    const XcbReply<xcb_xkb_get_map_reply_t> reply(xcb_xkb_get_map_reply(
        m_connection->xcb(),
        xcb_xkb_get_map(m_connection->xcb(), device, XCB_XKB_MAP_PART_MODIFIER_MAP, 0, 0, 0, 0, 0,
                        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
        nullptr));
    if (!reply)
        return false;
    xcb_xkb_get_map_map_t map{};
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                               reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                               reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                               reply->totalVModMapKeys, reply->present, &map);
    for (const xcb_xkb_key_mod_map_t &key : std::span(map.modmap_rtrn, reply->totalModMapKeys))
        m_modifierMap[key.keycode] = key.mods;
    return true;
}

std::vector<uint8_t> X11Keymap::keycodes() const
{
    const int first = std::max<int>(8, xkb_keymap_min_keycode(m_keymap.get()));
    const int last = std::min<int>(255, xkb_keymap_max_keycode(m_keymap.get()));
    const auto range = std::views::iota(first, last + 1);
    return {range.begin(), range.end()};
}

bool X11Keymap::gives(uint8_t keycode, xkb_layout_index_t group, xkb_keysym_t keysym) const
{
    return group < xkb_keymap_num_layouts_for_key(m_keymap.get(), keycode)
        && std::ranges::count(symbols(m_keymap.get(), keycode, group, 0), keysym) > 0;
}

bool X11Keymap::hasAnySymbol(uint8_t keycode, std::initializer_list<xkb_keysym_t> keysyms) const
{
    return std::ranges::any_of(allSymbols(m_keymap.get(), keycode), [&](xkb_keysym_t symbol) {
        return std::ranges::count(keysyms, symbol) > 0;
    });
}

bool X11Keymap::hasOnlySymbols(uint8_t keycode, std::initializer_list<xkb_keysym_t> keysyms) const
{
    return std::ranges::all_of(allSymbols(m_keymap.get(), keycode), [&](xkb_keysym_t symbol) {
        return std::ranges::count(keysyms, symbol) > 0;
    });
}

std::optional<uint8_t> X11Keymap::keycodeAt(uint32_t virtualKeyCode)
{
    const auto usual = VirtualKeyMap::keycode(virtualKeyCode);
    if (!usual || !load())
        return usual;
    const xkb_keycode_t named
        = xkb_keymap_key_by_name(m_keymap.get(), VirtualKeyMap::positionName(virtualKeyCode));
    return named >= 8 && named <= 255 ? static_cast<uint8_t>(named) : usual;
}

KeyboardLocks X11Keymap::locks()
{
    const XcbReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
        m_connection->xcb(), xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD),
        nullptr));
    return state ? KeyboardLocks{state->lockedMods, state->lockedGroup} : KeyboardLocks{};
}

std::optional<uint8_t> X11Keymap::keycodeInLayout(xkb_keysym_t keysym, uint8_t preferred)
{
    if (!load())
        return std::nullopt;
    const KeyboardSimulation keyboard(m_keymap.get(), locks());
    const auto isIt
        = [&](uint8_t keycode) { return gives(keycode, keyboard.layoutOf(keycode), keysym); };
    if (isIt(preferred))
        return preferred;
    const auto all = keycodes();
    const auto found = std::ranges::find_if(all, isIt);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<uint8_t> X11Keymap::keycodeFor(xkb_keysym_t keysym, uint8_t preferred)
{
    if (const auto keycode = keycodeInLayout(keysym, preferred))
        return keycode;
    if (!m_keymap)
        return std::nullopt;
    const xkb_layout_index_t groups = xkb_keymap_num_layouts(m_keymap.get());
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        if (gives(preferred, group, keysym))
            return preferred;
        for (const uint8_t keycode : keycodes()) {
            if (gives(keycode, group, keysym))
                return keycode;
        }
    }
    return std::nullopt;
}

uint16_t X11Keymap::modifiersOf(std::initializer_list<xkb_keysym_t> keysyms) const
{
    uint16_t mask = 0;
    for (const uint8_t keycode : keycodes()) {
        if (m_modifierMap[keycode] != 0 && hasAnySymbol(keycode, keysyms))
            mask |= m_modifierMap[keycode];
    }
    return mask;
}

std::optional<uint16_t> X11Keymap::modifierMask(uint32_t classicMask)
{
    if (!load())
        return std::nullopt;
    uint16_t mask = 0;
    if (classicMask & ClassicMask::shift)
        mask |= XCB_MOD_MASK_SHIFT;
    if (classicMask & ClassicMask::control)
        mask |= XCB_MOD_MASK_CONTROL;

    constexpr uint16_t free = XCB_MOD_MASK_1 | XCB_MOD_MASK_2 | XCB_MOD_MASK_3 | XCB_MOD_MASK_4
        | XCB_MOD_MASK_5;
    const auto addVirtual = [&](std::initializer_list<xkb_keysym_t> own,
                                std::initializer_list<xkb_keysym_t> substitute) {
        uint16_t found = modifiersOf(own) & free;
        if (found == 0)
            found = modifiersOf(substitute) & free;
        // The lowest where it is on several: keys of one modifier set it alone.
        mask |= found & -found;
        return found != 0;
    };
    if ((classicMask & ClassicMask::option)
        && !addVirtual({XKB_KEY_Alt_L, XKB_KEY_Alt_R}, {XKB_KEY_Meta_L, XKB_KEY_Meta_R}))
        return std::nullopt;
    if ((classicMask & ClassicMask::command)
        && !addVirtual({XKB_KEY_Super_L, XKB_KEY_Super_R}, {XKB_KEY_Hyper_L, XKB_KEY_Hyper_R}))
        return std::nullopt;
    return mask;
}

uint16_t X11Keymap::lockModifiers()
{
    if (!load())
        return XCB_MOD_MASK_LOCK;
    return (XCB_MOD_MASK_LOCK | modifiersOf(lockSymbols))
        & ~(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL);
}

bool X11Keymap::isHeldModifier(uint8_t keycode) const
{
    const xkb_layout_index_t groups = xkb_keymap_num_layouts(m_keymap.get());
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        KeyboardSimulation keyboard(m_keymap.get(), {0, group});
        keyboard.press(keycode);
        if (keyboard.holdsAny() && keyboard.isUndisturbed())
            return true;
    }
    return false;
}

bool X11Keymap::holdsOtherModifier(uint8_t state)
{
    if (!load())
        return false;
    const XcbReply<xcb_xkb_get_state_reply_t> now(xcb_xkb_get_state_reply(
        m_connection->xcb(), xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD),
        nullptr));
    uint16_t known = XCB_MOD_MASK_LOCK | (now ? now->lockedMods : 0);
    for (const uint32_t modifier :
         {ClassicMask::command, ClassicMask::shift, ClassicMask::option, ClassicMask::control})
        known |= modifierMask(modifier).value_or(0);
    return (state & ~known) != 0;
}

KeySet X11Keymap::heldModifierKeys()
{
    KeySet keys;
    if (!load())
        return keys;
    for (const uint8_t keycode : keycodes())
        keys[keycode] = isHeldModifier(keycode);
    return keys;
}

bool X11Keymap::addModifierKeys(std::vector<uint8_t> &keys, std::span<const uint16_t> modifiers,
                                const KeyboardLocks &locks) const
{
    const auto pressed = [&] {
        KeyboardSimulation keyboard(m_keymap.get(), locks);
        for (const uint8_t key : keys)
            keyboard.press(key);
        return keyboard;
    };
    KeyboardSimulation before = pressed();
    if (modifiers.empty()) {
        for (const uint8_t key : std::views::reverse(keys))
            before.release(key);
        return before.isUndisturbed();
    }
    const uint16_t wanted = modifiers.front();
    for (const uint8_t keycode : keycodes()) {
        keys.push_back(keycode);
        const KeyboardSimulation after = pressed();
        if (after.heldModifiers() == (before.heldModifiers() | wanted)
            && addModifierKeys(keys, modifiers.subspan(1), locks))
            return true;
        keys.pop_back();
    }
    return false;
}

std::optional<std::vector<uint8_t>> X11Keymap::modifierKeys(std::span<const uint16_t> modifiers,
                                                            const KeyboardLocks &locks)
{
    std::vector<uint8_t> keys;
    if (!load() || !addModifierKeys(keys, modifiers, locks))
        return std::nullopt;
    return keys;
}

KeySet X11Keymap::modifierKeys(uint16_t modifiers)
{
    KeySet keys;
    if (!load())
        return keys;
    for (size_t key = 0; key < m_modifierMap.size(); ++key)
        keys[key] = (m_modifierMap[key] & modifiers) != 0;
    return keys;
}

std::optional<uint8_t> X11Keymap::plainControlKey()
{
    const KeySet controls = modifierKeys(XCB_MOD_MASK_CONTROL);
    for (size_t key = 0; key < controls.size(); ++key) {
        const auto keycode = static_cast<uint8_t>(key);
        if (controls[key] && hasOnlySymbols(keycode, {XKB_KEY_Control_L, XKB_KEY_Control_R}))
            return keycode;
    }
    return std::nullopt;
}

std::optional<uint8_t> X11Keymap::unassignedKeycode()
{
    if (!load())
        return std::nullopt;
    for (const uint8_t keycode : std::views::reverse(keycodes())) {
        if (xkb_keymap_num_layouts_for_key(m_keymap.get(), keycode) == 0)
            return keycode;
    }
    return std::nullopt;
}

} // namespace Velloro
