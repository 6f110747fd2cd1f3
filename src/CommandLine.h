#pragma once

#include "Platform/HotkeyVerb.h"

#include <QStringList>
#include <optional>

namespace Velloro {

/// What the program's arguments ask for. It is read before there is an application object, so that
/// a question about the program needs no display and starts nothing.
struct CommandLine
{
    /// What to print before the program ends with the status, its line breaks included: to the
    /// standard output, with another status than 0 to the standard error.
    struct Answer
    {
        int status = 0;
        QString text;
    };

    /// None where the program is to run.
    std::optional<Answer> answer;
    /// What to ask of the Velloro that is running, instead.
    std::optional<HotkeyVerb> verb;

    /// Reads `arguments`, of which the first is the program's name.
    [[nodiscard]] static CommandLine read(const QStringList &arguments);
};

} // namespace Velloro
