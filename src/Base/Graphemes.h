#pragma once

#include <QString>
#include <cstdint>

namespace Velloro {

/// Counting and cutting text in user-perceived characters (grapheme clusters), by ICU's rules.
/// Any thread. Texts are UTF-16; code units of a cluster are never separated.
namespace Graphemes {

[[nodiscard]] int64_t count(const QString &text);

/// The first `length` characters, or the whole text when it is shorter.
[[nodiscard]] QString prefix(const QString &text, int64_t length);

/// The text without its first `length` characters.
[[nodiscard]] QString dropFirst(const QString &text, int64_t length);

/// The code-unit offset at which the character with this index starts; the text's length in code
/// units when the index lies beyond the end, 0 when it is negative.
[[nodiscard]] qsizetype offsetOf(const QString &text, int64_t index);

/// The number of characters that start before the code-unit `offset`.
[[nodiscard]] int64_t indexAt(const QString &text, qsizetype offset);

} // namespace Graphemes
} // namespace Velloro
