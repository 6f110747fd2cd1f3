#pragma once

#include "Platform/HotkeyVerb.h"

#include <QByteArray>
#include <cstdint>
#include <optional>

namespace Velloro {

/// What `velloro --press`, `--release` and `--toggle` ask of the Velloro that is running. A desktop
/// runs them by a key of its settings.
struct HotkeyCommand
{
    HotkeyVerb verb = HotkeyVerb::toggle;
    /// When the asking process was started, in clock ticks since the boot of the machine: of two
    /// that were started one after the other, the second may be here first.
    int64_t startedAt = 0;

    friend bool operator==(const HotkeyCommand &, const HotkeyCommand &) = default;

    /// The command of this process.
    [[nodiscard]] static HotkeyCommand make(HotkeyVerb verb);

    /// As it is sent: one line.
    [[nodiscard]] QByteArray line() const;
    /// What such a line says; nothing where it is none.
    [[nodiscard]] static std::optional<HotkeyCommand> read(const QByteArray &line);

    /// Sends it to whoever listens on the local socket, by system calls alone. False where nobody
    /// does, or does not take it within a second.
    [[nodiscard]] bool send(const QByteArray &socketPath) const;
};

} // namespace Velloro
