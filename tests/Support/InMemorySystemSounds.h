#pragma once

#include "Platform/SystemSounds.h"

#include <QStringList>

namespace Velloro {

/// Sounds that nobody hears.
class InMemorySystemSounds : public SystemSounds
{
public:
    /// The names in the order of their calls.
    QStringList played;

    void play(const QString &name) override { played << name; }
};

} // namespace Velloro
