#pragma once

#include "Platform/TrayHost.h"

namespace Velloro {

/// A desktop without a tray.
class InMemoryTrayHost : public TrayHost
{
public:
    bool isPresent() const override { return false; }
};

} // namespace Velloro
