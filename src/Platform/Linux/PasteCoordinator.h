#pragma once

#include <cstdint>

namespace Velloro {

/// Where a paste goes.
struct PasteTarget
{
    /// The display system's number of the window; 0 where it is unknown.
    uint64_t window = 0;
    /// It is this program's own, which can't fetch a text while the main thread waits.
    bool isOwn = false;
};

/// Who pastes what until when: what clipboard, key strokes and accessibility have to know of each
/// other, whichever display system they belong to.
///
/// Each of them is handed the coordinator, joins it in its constructor and leaves it in its
/// destructor; what a part that is not there would do is left out. Main thread only.
class PasteCoordinator
{
public:
    /// The clipboard, which lends the text.
    class Lender
    {
    public:
        /// Has the primary selection hold the text as well, until the text is given back.
        virtual void lendToPrimarySelection() = 0;
        /// The application of the target is about to fetch the text that is lent. False where it
        /// would get something else: no stroke may be sent then.
        [[nodiscard]] virtual bool beginPaste(const PasteTarget &target) = 0;
        /// Waits, for a bounded time, until the target has fetched the text; whether it has.
        virtual bool awaitPaste() = 0;

    protected:
        ~Lender() = default;
    };
    /// The sender of key strokes.
    class Typist
    {
    public:
        /// Waits, for a bounded time, until the window in front has taken the strokes that were
        /// sent to it. False when it has not: they are still to come.
        [[nodiscard]] virtual bool awaitReceipt() = 0;

    protected:
        ~Typist() = default;
    };
    /// What knows the focused element.
    class Reader
    {
    public:
        /// False where that is unknown.
        [[nodiscard]] virtual bool isTerminalFocused() = 0;

    protected:
        ~Reader() = default;
    };

    void join(Lender &lender) { m_lender = &lender; }
    void join(Typist &typist) { m_typist = &typist; }
    void join(Reader &reader) { m_reader = &reader; }
    void leave(const Lender &lender);
    void leave(const Typist &typist);
    void leave(const Reader &reader);

    /// Before a paste stroke is chosen.
    [[nodiscard]] bool isTerminalFocused() const;
    /// Before a paste stroke is sent, one of those that may take the primary selection or not;
    /// false where none may be.
    [[nodiscard]] bool beginPaste(const PasteTarget &target, bool takesPrimarySelection) const;
    /// Before any other stroke, which would meet a field without the pasted text.
    void awaitPaste() const;
    /// Before the focused element is read or written: what strokes do to it comes first. False when
    /// they are still to come.
    [[nodiscard]] bool awaitStrokes() const;

private:
    Lender *m_lender = nullptr;
    Typist *m_typist = nullptr;
    Reader *m_reader = nullptr;
};

} // namespace Velloro
