#pragma once

#include "Platform/ProcessInfo.h"

namespace Velloro {

/// The process as the kernel and the C library know it.
class LinuxProcessInfo : public ProcessInfo
{
public:
    [[nodiscard]] int processorCount() const override;
    /// Frame number, object file, address and, where the dynamic linker knows it, the function.
    [[nodiscard]] QStringList callStackSymbols() const override;
};

} // namespace Velloro
