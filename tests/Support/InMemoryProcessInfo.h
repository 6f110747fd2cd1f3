#pragma once

#include "Platform/ProcessInfo.h"

namespace Velloro {

/// A process on a machine with as many cores and with the stack that a test says. To be set up
/// before it is shared with other threads.
class InMemoryProcessInfo : public ProcessInfo
{
public:
    int cores = 4;
    QStringList stack = {QStringLiteral("0 inner"), QStringLiteral("1 outer")};

    [[nodiscard]] int processorCount() const override { return cores; }
    [[nodiscard]] QStringList callStackSymbols() const override { return stack; }
};

} // namespace Velloro
