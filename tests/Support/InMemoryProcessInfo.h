#pragma once

#include "Base/StringLiterals.h"
#include "Platform/ProcessInfo.h"

namespace Velloro {

/// A process on a machine with as many cores and with the stack that a test says. To be set up
/// before it is shared with other threads.
class InMemoryProcessInfo : public ProcessInfo
{
public:
    int cores = 4;
    QStringList stack = {u"0 inner"_s, u"1 outer"_s};

    [[nodiscard]] int processorCount() const override { return cores; }
    [[nodiscard]] QStringList callStackSymbols() const override { return stack; }
};

} // namespace Velloro
