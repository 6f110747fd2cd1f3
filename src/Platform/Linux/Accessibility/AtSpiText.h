#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiReference.h"
#include "Platform/Linux/Accessibility/AtSpiStates.h"

#include <QDBusMessage>
#include <QString>
#include <QVariantList>
#include <optional>

namespace Velloro {

class AtSpiApplications;

/// The text of one object on the accessibility bus, in user-perceived characters. Offsets on the
/// bus are code points; some toolkits count UTF-16 code units there, which is found out and allowed
/// for. Main thread; calls wait within the time allowance.
///
/// Writing is always the smallest edit that makes the wanted text, so that the application's undo
/// history, formatting and scroll position live on, and is either done whole or undone. What an
/// application claims to have written is not believed where it can be seen that it did nothing.
class AtSpiText
{
public:
    template <typename T>
    using Result = Accessibility::Result<T>;

    /// An insertion as it must show in the text. Offsets as on the bus.
    struct Insertion
    {
        int start = 0;
        int end = 0;
        /// What is between the two; empty where it can't be read.
        QString text;
        /// Length of the whole text.
        int count = 0;
        int caret = 0;
    };

    /// `applications` outlives this object.
    AtSpiText(AtSpiApplications &applications, AtSpiReference object);

    /// Reads the whole text. The text of a password field can't be read, nor can one in which
    /// other objects are embedded, since offsets in it say too little about where the caret is.
    [[nodiscard]] Result<QString> content();
    /// The first selection, or the caret with length 0.
    [[nodiscard]] Result<TextRange> selection();

    /// Makes the text equal to `wanted`.
    [[nodiscard]] Result<void> setContent(const QString &wanted);
    /// Sets the caret, or selects when the range has a length.
    [[nodiscard]] Result<void> setSelection(const TextRange &range);
    /// Puts `text` in place of the selection or at the caret, and the caret after it.
    [[nodiscard]] Result<void> replaceSelection(const QString &text);

    /// What was inserted last by this object; nothing if that was refused or is not known.
    [[nodiscard]] const std::optional<Insertion> &lastInsertion() const { return m_insertion; }
    /// Whether the text shows the insertion, and the caret is where that left it. An application
    /// may be late to show it.
    [[nodiscard]] bool shows(const Insertion &insertion);

    /// The turn of the event loop in which the object was made; it is not to be used in another.
    [[nodiscard]] quint64 turn() const { return m_turn; }
    [[nodiscard]] const AtSpiReference &object() const { return m_object; }

private:
    enum class Unit { codePoint, codeUnit };
    enum class Answer { yes, no, none };
    struct Offsets
    {
        int start = 0;
        int end = 0;
    };

    Result<QDBusMessage> ask(const QString &interface, const QString &method,
                             const QVariantList &arguments = {});
    Answer tell(const QString &interface, const QString &method, const QVariantList &arguments);
    Result<int> number(const QString &property);
    Result<bool> isSecret();
    Result<void> requireEditable();
    Result<QString> knownContent();
    Result<Offsets> selectionOffsets();
    Unit unitByToolkit();
    int toOffset(qsizetype codeUnits, const QString &content) const;
    qsizetype toCodeUnits(int offset, const QString &content) const;
    int lengthOf(const QString &text) const;
    bool answersWhenDone();
    bool isInWebPage();
    bool isUnchanged(int count, const std::optional<QString> &content);
    Answer insert(int offset, const QString &text);
    Answer remove(const Offsets &range);
    Answer select(const Offsets &range);
    Result<void> replace(const Offsets &range, const QString &removed, const QString &inserted);

    AtSpiApplications &m_applications;
    const AtSpiReference m_object;
    const quint64 m_turn;
    /// The text as it was read or as it was last written; toolkits may be late to show the latter.
    std::optional<QString> m_content;
    /// Its length as the application counts it.
    int m_count = 0;
    std::optional<Insertion> m_insertion;
    Unit m_unit = Unit::codePoint;
};

} // namespace Velloro
