#pragma once

#include "Platform/Updater.h"

namespace Velloro {

/// Updates are the system's package manager's: it checks and installs without our doing.
class PackagedUpdater : public Updater
{
public:
    void start() override {}
};

} // namespace Velloro
