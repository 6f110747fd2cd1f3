#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace Velloro {

class TextInsertionManager;

/// The text that a streaming dictation types while the user speaks, until the final text replaces
/// it. Main thread only.
///
/// Only text that was seen to arrive is counted, and only what is counted is ever deleted. While it
/// is not known whether the last piece arrived, or the window or field in front is another than the
/// one that it went to, nothing more is typed.
class StreamedText
{
public:
    /// `insertion` outlives this object.
    explicit StreamedText(TextInsertionManager &insertion);

    /// Forgets what was typed: another recording begins.
    void clear();
    /// Types what the confirmed text, which is not empty, has beyond what was typed.
    void type(const QString &confirmed);
    /// How many characters, separating spaces included, can be deleted before the caret: what
    /// arrived, or nothing where something else than that may stand there.
    [[nodiscard]] int64_t removableCount();

private:
    /// A piece that was typed, and the line that tells of it but for its total.
    struct Piece
    {
        int64_t length = 0;
        QString line;
        QString end;
    };

    /// False where it could not be inserted: it comes with what is confirmed next.
    bool insert(const QString &text);
    /// Whether all that was typed has arrived; counts it.
    bool hasArrived();

    TextInsertionManager &m_insertion;
    /// The confirmed text that was typed last.
    QString m_typed;
    /// Characters that have arrived.
    int64_t m_count = 0;
    /// What is not yet known to have arrived.
    std::optional<Piece> m_pending;
    bool m_isHeldBack = false;
};

} // namespace Velloro
