#pragma once

#include "Platform/Platform.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <optional>

namespace Velloro {

/// Puts text into whatever text field has the keyboard focus, as if the user had typed it: through
/// the accessibility interface or, failing that, through the pasteboard and a paste stroke. Main
/// thread only. Writes no log lines.
class TextInsertionManager : public QObject
{
    Q_OBJECT

public:
    explicit TextInsertionManager(Platform &platform, QObject *parent = nullptr);
    /// Gives the pasteboard back what the user had on it, where that is still to be done.
    ~TextInsertionManager() override;

    /// Insertions may come until `finish`: what they displace on the pasteboard is read meanwhile.
    void prepare();
    void finish();
    /// Inserts the text over the selection or at the caret. False only for an empty text.
    bool insertText(const QString &text);
    /// The same for a text that may have to be removed again. False where it could not be inserted,
    /// or only in a way that nobody can tell whether `deleteBackwards` would remove it: it is not
    /// pasted where the system does not tell what the user presses. Nothing is inserted then.
    [[nodiscard]] bool insertRemovably(const QString &text);
    /// Whether the last attempt to insert a text failed, because another program kept the
    /// pasteboard from its paste. It does not count as inserted: what is asked below is answered
    /// for the one before.
    [[nodiscard]] bool wasLastPasteRefused() const { return m_outcome == Outcome::refused; }
    /// Whether `insertText` has left its text on the pasteboard for the user to paste, because no
    /// paste stroke could be sent. It does not count as inserted either.
    [[nodiscard]] bool wasLastTextLeftToPaste() const { return m_outcome == Outcome::unsent; }
    /// Whether the text inserted last was seen to arrive: the application shows what was written,
    /// or has fetched what it was to paste, which is waited for, for a bounded time. A text that is
    /// written may be seen later than at first.
    [[nodiscard]] bool lastInsertionArrived();
    /// Whether what is typed now would come directly after the text inserted last, as far as that
    /// can be known: the same window and the same element are in front, and where the text was
    /// written, the caret still stands at its end; where it was pasted, the user has pressed no key
    /// and no button since.
    [[nodiscard]] bool isAtLastInsertion();
    /// Sends that many backspace strokes, 5 ms apart, blocking meanwhile; nothing for a count
    /// below 1.
    ///
    /// One stroke stands for one user-perceived character, and applications differ in what it
    /// takes: GTK 3 fields take accents, emoji sequences and flags whole, but only the last code
    /// point of Devanagari, Thai, pointed Hebrew, vowelled Arabic and decomposed Hangul; a
    /// terminal's line takes one code point always. There, as many code points go as characters
    /// were counted, so that nothing that stood before is ever removed.
    ///
    /// The strokes end when another window comes to the front, or the user presses something after
    /// words that were pasted: they would delete what is there. Where no strokes can be sent, words
    /// that were written are written away.
    ///
    /// What is inserted next comes after the strokes: it is written when the text shows what they
    /// have done, which is waited for, for a bounded time, and pasted where that isn't seen.
    void deleteBackwards(int64_t count);

private:
    /// Where a text went, as far as it is known, and how.
    struct Insertion
    {
        AccessibilityElementRef target;
        std::optional<uint64_t> window;
        /// Rather than pasted.
        bool wasWritten = false;
        bool wasFetched = false;
        /// What the user had pressed when it was pasted.
        std::optional<uint64_t> presses;
    };
    /// Strokes that were sent, and what they leave of the text.
    struct Deletion
    {
        AccessibilityElementRef element;
        std::optional<QString> remaining;
        int64_t caret = 0;
    };
    enum class Outcome {
        inserted,
        refused, ///< Another program kept the pasteboard.
        unsent,  ///< There was no stroke to paste it with.
    };

    /// Whether the window that the text inserted last went to is in front, as far as is known.
    [[nodiscard]] bool isInLastWindow();
    /// Whether the user has left alone what was pasted last.
    [[nodiscard]] bool isUntouched();
    [[nodiscard]] AccessibilityElementRef focusedElement();
    [[nodiscard]] Deletion deletion(int64_t count);
    [[nodiscard]] bool isDone(const Deletion &deletion, const AccessibilityElementRef &focused);
    /// Has what was deleted written away, where no strokes can be sent.
    void deleteViaAccessibility();
    Outcome insert(const QString &text, bool mayPaste);
    bool insertViaAccessibility(const QString &text);
    Outcome insertViaClipboard(const QString &text);
    bool simulatePaste();

    Platform &m_platform;
    Insertion m_last;
    Outcome m_outcome = Outcome::inserted;
    /// What the next insertion has to come after.
    std::optional<Deletion> m_deletion;
    /// Runs while the pasteboard is borrowed.
    QTimer m_pasteboardReturn;
};

} // namespace Velloro
