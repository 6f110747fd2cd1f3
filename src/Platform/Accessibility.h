#pragma once

#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <sys/types.h>
#include <tl/expected.hpp>
#include <variant>

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

/// The value of an attribute: a text, a range of text or an element.
using AccessibilityValue = std::variant<QString, TextRange, AccessibilityElementRef>;

/// Why an attribute could not be read or written.
enum class AccessibilityError {
    failure,              ///< The application refused or answered nonsense.
    attributeUnsupported, ///< The element has no such attribute.
    noValue,              ///< The attribute has no value now.
    cannotComplete,       ///< The application did not answer in time, or is gone.
};

/// The accessibility interface: who has the focus, and reading and writing text elements.
///
/// Attributes used: "AXFocusedUIElement" (an element), "AXRole" and "AXValue" (texts),
/// "AXSelectedTextRange" (a range), "AXSelectedText" (a text). Called on the main thread. Every
/// call has a time limit, and one application that does not answer costs at most half a second
/// for all calls of an insertion together.
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

    /// The element that stands for the whole desktop.
    [[nodiscard]] virtual AccessibilityElementRef systemWideElement() = 0;

    /// The element that stands for the application with this process identifier.
    [[nodiscard]] virtual AccessibilityElementRef applicationElement(pid_t processIdentifier) = 0;

    [[nodiscard]] virtual Result<AccessibilityValue>
    copyAttributeValue(const AccessibilityElementRef &element, const QString &attribute) = 0;

    [[nodiscard]] virtual Result<void> setAttributeValue(const AccessibilityElementRef &element,
                                                         const QString &attribute,
                                                         const AccessibilityValue &value) = 0;

    /// Whether the text that was written last is in its element now, with the caret where that
    /// left it. Applications may be late to show what they were sent, so the answer may change.
    /// False when nothing was written, and where it can't be read.
    [[nodiscard]] virtual bool showsLastText() = 0;
};

} // namespace Velloro
