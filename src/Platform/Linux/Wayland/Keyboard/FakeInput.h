#pragma once

#include "Platform/Linux/Wayland/Keyboard/StrokeSender.h"

struct org_kde_kwin_fake_input;

namespace Velloro {

/// Keys on the user's own keyboard, as KDE lets a program press them that its desktop file names.
/// What the user holds is held for the strokes as well, so it is let go before: to KDE, a hotkey
/// that is held ends with that.
class FakeInput final : public StrokeSender
{
public:
    /// Null where the compositor does not let this program.
    [[nodiscard]] static std::unique_ptr<FakeInput> make(WaylandConnection &connection);

    [[nodiscard]] bool press(const Stroke &stroke) override;
    void release(const Stroke &stroke) override;

private:
    explicit FakeInput(org_kde_kwin_fake_input *input);

    void sendKey(uint32_t key, bool isDown);

    WaylandHandle<org_kde_kwin_fake_input> m_input;
};

} // namespace Velloro
