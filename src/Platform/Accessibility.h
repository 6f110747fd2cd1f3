#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <sys/types.h>
#include <tl/expected.hpp>

namespace Velloro {

/// A range of text, counted in user-perceived characters (grapheme clusters).
struct TextRange
{
    int64_t location = 0;
    int64_t length = 0;

    friend bool operator==(const TextRange &, const TextRange &) = default;
};

/// An element of another application's interface. Services derive their own; callers only keep it.
class AccessibilityElement
{
public:
    virtual ~AccessibilityElement() = default;

    /// Whether both stand for the same element of the same application.
    [[nodiscard]] virtual bool isSameAs(const AccessibilityElement &other) const
    {
        return this == &other;
    }
};

using AccessibilityElementRef = std::shared_ptr<const AccessibilityElement>;

/// What an element is, as far as it matters for dictating into it.
enum class AccessibilityRole {
    textField,   ///< A line of text.
    textArea,    ///< A text of several lines, a terminal included.
    searchField, ///< A line of text to search for.
    comboBox,    ///< A list of choices with a text that can be edited.
    staticText,  ///< A text that is shown.
    webArea,     ///< A page or document that is not edited.
    button,      ///< A button.
    other,       ///< Anything else that takes no text.
};

/// Why an element could not be found, read or written.
enum class AccessibilityError {
    failure,        ///< The application refused or answered nonsense.
    unsupported,    ///< The element has nothing of the kind.
    noValue,        ///< There is none now.
    cannotComplete, ///< The application did not answer in time, or is gone.
};

/// The accessibility interface: who has the focus, and reading and writing text elements.
///
/// Called on the main thread. Every call has a time limit, and one application that does not answer
/// costs at most half a second for all calls of an insertion together.
class Accessibility
{
public:
    template <typename T>
    using Result = tl::expected<T, AccessibilityError>;

    virtual ~Accessibility() = default;

    /// Whether this process may use the interface: the bus answers and is enabled.
    [[nodiscard]] virtual bool isProcessTrusted() = 0;

    /// Asks for the permission; the answer arrives later, through `isProcessTrusted`.
    virtual void requestTrust() = 0;

    /// The element that has the keyboard focus; never null.
    [[nodiscard]] virtual Result<AccessibilityElementRef> focusedElement() = 0;
    /// The element that has the focus within the application of this process; never null.
    [[nodiscard]] virtual Result<AccessibilityElementRef> focusedElementOf(pid_t process) = 0;

    /// `noValue` where what the element says of itself leaves open whether it takes text.
    [[nodiscard]] virtual Result<AccessibilityRole> role(const AccessibilityElementRef &element)
        = 0;
    /// The whole text.
    [[nodiscard]] virtual Result<QString> text(const AccessibilityElementRef &element) = 0;
    /// What is selected of the text, or the caret with length 0.
    [[nodiscard]] virtual Result<TextRange> selection(const AccessibilityElementRef &element) = 0;

    /// Makes the whole text equal to `text`.
    [[nodiscard]] virtual Result<void>
    setText(const AccessibilityElementRef &element, const QString &text) = 0;
    /// Selects the range, or sets the caret where it has length 0.
    [[nodiscard]] virtual Result<void>
    setSelection(const AccessibilityElementRef &element, const TextRange &range) = 0;
    /// Puts the text in place of the selection, or at the caret.
    [[nodiscard]] virtual Result<void>
    insert(const AccessibilityElementRef &element, const QString &text) = 0;

    /// Whether the text that was written last is in its element now, with the caret where that
    /// left it. Applications may be late to show what they were sent, so the answer may change.
    /// False when nothing was written, and where it can't be read.
    [[nodiscard]] virtual bool showsLastText() = 0;
};

} // namespace Velloro
