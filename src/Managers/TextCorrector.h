#pragma once

#include <QString>

namespace Velloro {

/// Turns a raw transcript into text fit for insertion. Stateless; any thread.
class TextCorrector
{
public:
    TextCorrector() = delete;

    /// The text without sound tags, stage directions, filler words, immediate repetitions and
    /// stray blanks, its first letter capitalised in languages that do so. `language` is a
    /// `WhisperLanguage` raw value; an unknown one and "auto" take the English fillers and no
    /// capital letter. Never fails; the result may be empty.
    [[nodiscard]] static QString correct(const QString &text, const QString &language);
};

} // namespace Velloro
