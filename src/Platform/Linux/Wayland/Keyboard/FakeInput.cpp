#include "Platform/Linux/Wayland/Keyboard/FakeInput.h"

#include <fake-input-client.h>
#include <linux/input-event-codes.h>

namespace Velloro {

namespace {

constexpr uint32_t firstWithKeys = 4;
constexpr uint32_t modifiers[] = {KEY_LEFTALT,  KEY_RIGHTALT,  KEY_LEFTCTRL,  KEY_RIGHTCTRL,
                                  KEY_LEFTMETA, KEY_RIGHTMETA, KEY_LEFTSHIFT, KEY_RIGHTSHIFT};

} // namespace

std::unique_ptr<FakeInput> FakeInput::make(WaylandConnection &connection)
{
    auto *input = connection.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface,
                                                           firstWithKeys);
    if (!input)
        return nullptr;
    std::unique_ptr<FakeInput> made(new FakeInput(input));
    if (org_kde_kwin_fake_input_get_version(input) < firstWithKeys)
        return nullptr;
    org_kde_kwin_fake_input_authenticate(input, "Velloro", "to paste what was dictated");
    return made;
}

FakeInput::FakeInput(org_kde_kwin_fake_input *input)
    : m_input(input, {org_kde_kwin_fake_input_destroy})
{
}

bool FakeInput::press(const Stroke &stroke)
{
    // Nobody tells which of them are held; letting go of one that is not does nothing.
    for (const uint32_t key : modifiers)
        sendKey(key, false);
    if (stroke.isWithControl)
        sendKey(KEY_LEFTCTRL, true);
    if (stroke.isWithShift)
        sendKey(KEY_LEFTSHIFT, true);
    sendKey(stroke.key, true);
    return true;
}

void FakeInput::release(const Stroke &stroke)
{
    sendKey(stroke.key, false);
    if (stroke.isWithShift)
        sendKey(KEY_LEFTSHIFT, false);
    if (stroke.isWithControl)
        sendKey(KEY_LEFTCTRL, false);
}

void FakeInput::sendKey(uint32_t key, bool isDown)
{
    org_kde_kwin_fake_input_keyboard_key(m_input.get(), key,
                                         isDown ? WL_KEYBOARD_KEY_STATE_PRESSED
                                                : WL_KEYBOARD_KEY_STATE_RELEASED);
}

} // namespace Velloro
