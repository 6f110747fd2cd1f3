#pragma once

#include "Platform/HotkeyRegistration.h"

#include <QString>
#include <cstdint>
#include <optional>

namespace Velloro {

/// Where the user reads of a problem, and so where he can choose another hotkey.
enum class HotkeyProblemPlace { recorder, panel };

/// Why the hotkey does not work and what to do about it. `status` is what the registration says;
/// without one, and while the desktop has yet to answer, there is no problem, and the text is
/// empty.
[[nodiscard]] QString hotkeyProblem(std::optional<int32_t> status, const QString &hotkey,
                                    HotkeyProblemPlace place);

/// What the hotkey does not do on this desktop; empty where it does everything.
[[nodiscard]] QString hotkeyLimits(HotkeyAbilities abilities);

} // namespace Velloro
