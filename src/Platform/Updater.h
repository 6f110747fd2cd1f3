#pragma once

namespace Velloro {

/// What checks for new versions and installs them, on its own configuration. Main thread only.
class Updater
{
public:
    virtual ~Updater() = default;

    /// Starts the checks.
    virtual void start() = 0;
};

} // namespace Velloro
