#pragma once

namespace Velloro {

/// A page of the desktop's settings to which the program leads the user.
enum class SettingsPage {
    microphone,    ///< Where the microphone is chosen and switched on.
    accessibility, ///< Where assistive technologies are switched on.
};

/// The desktop's own settings program. Main thread only; never waits without a bound.
class SystemSettings
{
public:
    virtual ~SystemSettings() = default;

    /// Opens the page; false when the desktop has no such page, or it could not be opened.
    [[nodiscard]] virtual bool openPage(SettingsPage page) = 0;
};

} // namespace Velloro
