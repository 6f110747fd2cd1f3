#pragma once

#include <QStringList>

namespace Velloro {

/// What the program asks about itself. Any thread.
class ProcessInfo
{
public:
    virtual ~ProcessInfo() = default;

    /// Processor cores of the machine.
    [[nodiscard]] virtual int processorCount() const = 0;
    /// The calling thread's stack, innermost frame first, one text per frame.
    [[nodiscard]] virtual QStringList callStackSymbols() const = 0;
};

} // namespace Velloro
