#pragma once

#include <QString>
#include <functional>

namespace Velloro {

/// The diagnostic lines on standard output: no levels, no file, one line per call, written at once.
/// Any thread; lines of different threads never mix. Nobody waits for a reader who does not read:
/// see `LogOutput`.
namespace Log {

/// Receives each line, without its line break, in place of standard output.
using Sink = std::function<void(const QString &line)>;

/// Writes `[tag] message` as one line; line breaks within the message become blanks.
void line(QStringView tag, const QString &message);

/// The same without a component's tag.
void line(const QString &message);

/// Waits a little for a slow reader of standard output, as the end of the program does by itself.
void flush();

/// Sends the lines elsewhere, for tests; an empty sink restores standard output.
void setSink(Sink sink);

} // namespace Log
} // namespace Velloro
