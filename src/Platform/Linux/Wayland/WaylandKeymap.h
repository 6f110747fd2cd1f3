#pragma once

#include "Base/CustomDelete.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QObject>
#include <memory>
#include <vector>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// The layouts of the user's keyboard that was used last, as the compositor tells them. Which of
/// several layouts is in force it tells only to the window with the focus.
class WaylandKeymap final : public QObject
{
    Q_OBJECT

public:
    /// Waits shortly for the compositor to tell of a keyboard. A null connection makes a keymap in
    /// which nothing is known.
    explicit WaylandKeymap(std::shared_ptr<WaylandConnection> display);
    /// A keymap of this text, which stays as it is.
    explicit WaylandKeymap(const QByteArray &text);
    ~WaylandKeymap() override;

    /// The keysyms, one for each layout, that the key at the position of a virtual key code gives
    /// with or without Shift. Empty where the key or the keymap is unknown.
    [[nodiscard]] std::vector<xkb_keysym_t> keysyms(uint32_t virtualKeyCode, bool withShift) const;

Q_SIGNALS:
    /// To another keymap than before.
    void changed();

private:
    void followKeyboard(bool isThere);
    void readFile(uint32_t format, int descriptor, uint32_t size);
    void readText(const char *text, size_t size);

    std::shared_ptr<WaylandConnection> m_display;
    std::unique_ptr<xkb_context, CustomDelete<xkb_context_unref>> m_context;
    std::unique_ptr<xkb_keymap, CustomDelete<xkb_keymap_unref>> m_keymap;
    QByteArray m_text;
    WaylandHandle<wl_seat> m_seat;
    WaylandHandle<wl_keyboard> m_keyboard;
};

} // namespace Velloro
