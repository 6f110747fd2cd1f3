#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Accessibility.h"

#include <QStringList>
#include <map>
#include <optional>

namespace Velloro {

/// An accessibility interface to elements that the test makes.
class InMemoryAccessibility : public Accessibility
{
public:
    /// A text element. What has no value can't be read; what is refused can't be written.
    struct Element : AccessibilityElement
    {
        std::optional<AccessibilityRole> role;
        std::optional<QString> value;
        std::optional<TextRange> selectedRange;
        bool refusesValue = false;
        bool refusesSelectedRange = false;
        bool refusesSelectedText = false;
    };

    // Script.
    bool trusted = true;
    std::shared_ptr<Element> focused;
    /// The focused elements of applications, by process; an application that is not here has none.
    std::map<pid_t, std::shared_ptr<Element>> focusedOf;
    /// Whether what was written can be seen.
    bool showsWrites = true;

    // What was asked.
    /// What was to be written, whether or not it was: "set TEXT", "select LOCATION LENGTH" and
    /// "insert TEXT".
    QStringList writes;
    int trustRequests = 0;

    /// Makes a text field with the focus.
    Element &focusText(const QString &value, TextRange selectedRange)
    {
        focused = std::make_shared<Element>();
        focused->role = AccessibilityRole::textField;
        focused->value = value;
        focused->selectedRange = selectedRange;
        return *focused;
    }

    bool isProcessTrusted() override { return trusted; }
    void requestTrust() override { ++trustRequests; }

    Result<AccessibilityElementRef> focusedElement() override { return reference(focused); }
    Result<AccessibilityElementRef> focusedElementOf(pid_t process) override
    {
        return reference(focusedOf[process]);
    }

    Result<AccessibilityRole> role(const AccessibilityElementRef &element) override
    {
        return known(of(element).role);
    }
    Result<QString> text(const AccessibilityElementRef &element) override
    {
        return known(of(element).value);
    }
    Result<TextRange> selection(const AccessibilityElementRef &element) override
    {
        return known(of(element).selectedRange);
    }

    Result<void> setText(const AccessibilityElementRef &element, const QString &text) override
    {
        writes << u"set "_s + text;
        if (element != focused || focused->refusesValue)
            return tl::unexpected(AccessibilityError::failure);
        focused->value = text;
        return {};
    }
    Result<void> setSelection(const AccessibilityElementRef &element,
                              const TextRange &range) override
    {
        writes << u"select %1 %2"_s.arg(range.location).arg(range.length);
        if (element != focused || focused->refusesSelectedRange)
            return tl::unexpected(AccessibilityError::failure);
        focused->selectedRange = range;
        return {};
    }
    /// Taken or refused, but not done.
    Result<void> insert(const AccessibilityElementRef &element, const QString &text) override
    {
        writes << u"insert "_s + text;
        if (element != focused || focused->refusesSelectedText)
            return tl::unexpected(AccessibilityError::failure);
        return {};
    }

    bool showsLastText() override { return showsWrites; }

private:
    static const Element &of(const AccessibilityElementRef &element)
    {
        return dynamic_cast<const Element &>(*element);
    }
    template <typename T>
    static Result<T> known(const std::optional<T> &value)
    {
        if (!value)
            return tl::unexpected(AccessibilityError::noValue);
        return *value;
    }
    static Result<AccessibilityElementRef> reference(const std::shared_ptr<Element> &element)
    {
        return known(element ? std::optional<AccessibilityElementRef>(element) : std::nullopt);
    }
};

} // namespace Velloro
