#pragma once

#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"
#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"

#include <memory>
#include <optional>

namespace Velloro {

/// The hotkey by our extension of GNOME Shell.
class ShellHotkeys final : public DesktopHotkeys
{
    Q_OBJECT

public:
    explicit ShellHotkeys(std::shared_ptr<ShellExtension> extension);
    ~ShellHotkeys() override;

    void look(std::function<void(bool isOffered)> done) override;
    void bind(KeyCombination combination) override;
    void unbind() override;

private:
    void bindWanted();
    void endPress();

    std::shared_ptr<ShellExtension> m_extension;
    std::optional<KeyCombination> m_wanted;
    /// Counts what was asked for, so that an answer to something older is recognised.
    int m_requestNumber = 0;
    bool m_isHeld = false;
};

} // namespace Velloro
