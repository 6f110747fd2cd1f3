#pragma once

#include "Platform/TrayHost.h"

namespace Velloro {

/// A desktop without a tray, until one is said to have come.
class InMemoryTrayHost : public TrayHost
{
public:
    bool isPresent() const override { return m_isPresent; }
    void appear()
    {
        m_isPresent = true;
        Q_EMIT appeared();
    }

private:
    bool m_isPresent = false;
};

} // namespace Velloro
