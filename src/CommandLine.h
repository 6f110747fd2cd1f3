#pragma once

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

    /// The answer to `arguments`, of which the first is the program's name; none where the program
    /// is to run.
    [[nodiscard]] static std::optional<Answer> read(const QStringList &arguments);
};

} // namespace Velloro
