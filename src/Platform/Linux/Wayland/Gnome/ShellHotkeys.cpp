#include "Platform/Linux/Wayland/Gnome/ShellHotkeys.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"

#include <utility>

namespace Velloro {

namespace {

/// As the shell reads combinations; the key by its place. Empty where the keyboard has no such key.
QString accelerator(KeyCombination combination)
{
    constexpr std::pair<uint32_t, const char16_t *> names[] = {
        {ClassicMask::command, u"<Super>"},
        {ClassicMask::control, u"<Control>"},
        {ClassicMask::option, u"<Alt>"},
        {ClassicMask::shift, u"<Shift>"},
    };
    const auto keycode = VirtualKeyMap::keycode(combination.keyCode);
    if (!keycode)
        return {};
    QString text;
    for (const auto &[mask, name] : names) {
        if (combination.modifiers & mask)
            text += QStringView(name);
    }
    return text + u"0x"_s + QString::number(*keycode, 16);
}

} // namespace

ShellHotkeys::ShellHotkeys(std::shared_ptr<ShellExtension> extension)
    : m_extension(std::move(extension))
{
    connect(m_extension.get(), &ShellExtension::pressed, this, [this] {
        if (!m_wanted || std::exchange(m_isHeld, true))
            return;
        Q_EMIT pressed();
    });
    connect(m_extension.get(), &ShellExtension::released, this, &ShellHotkeys::endPress);
    connect(m_extension.get(), &ShellExtension::availabilityChanged, this, [this] {
        endPress();
        bindWanted();
    });
}

ShellHotkeys::~ShellHotkeys()
{
    if (m_wanted)
        m_extension->unbind();
}

void ShellHotkeys::look(std::function<void(bool)> done)
{
    m_extension->look(std::move(done));
}

void ShellHotkeys::bind(KeyCombination combination)
{
    m_wanted = combination;
    bindWanted();
}

void ShellHotkeys::bindWanted()
{
    if (!m_wanted)
        return;
    const int number = ++m_requestNumber;
    const QString keys = accelerator(*m_wanted);
    if (keys.isEmpty() || !m_extension->isAvailable()) {
        const Status status = keys.isEmpty() ? HotkeyStatus::notOnKeyboard
                                             : HotkeyStatus::unavailable;
        QMetaObject::invokeMethod(
            this, [this, status] { Q_EMIT statusChanged(status); }, Qt::QueuedConnection);
        return;
    }
    m_extension->bind(keys, [this, number](std::optional<bool> isTaken) {
        if (number != m_requestNumber)
            return;
        if (!isTaken)
            Q_EMIT statusChanged(HotkeyStatus::unavailable);
        else
            Q_EMIT statusChanged(*isTaken ? HotkeyStatus::taken : 0);
    });
}

void ShellHotkeys::unbind()
{
    ++m_requestNumber;
    if (std::exchange(m_wanted, std::nullopt))
        m_extension->unbind();
    endPress();
}

void ShellHotkeys::endPress()
{
    if (std::exchange(m_isHeld, false))
        Q_EMIT released();
}

} // namespace Velloro
