#pragma once

#include "Platform/SystemSettings.h"

#include <vector>

namespace Velloro {

/// A desktop that has settings pages, or none.
class InMemorySystemSettings : public SystemSettings
{
public:
    bool hasPages = true;
    /// Every page that was asked for.
    std::vector<SettingsPage> asked;

    [[nodiscard]] bool openPage(SettingsPage page) override
    {
        asked.push_back(page);
        return hasPages;
    }
};

} // namespace Velloro
