#pragma once

#include <QString>

namespace Velloro {

/// Short named cues: "Pop" and "Tink". Main thread only.
class SystemSounds
{
public:
    virtual ~SystemSounds() = default;

    /// Starts playing the cue and returns at once; an unknown name is silently skipped.
    virtual void play(const QString &name) = 0;
};

} // namespace Velloro
