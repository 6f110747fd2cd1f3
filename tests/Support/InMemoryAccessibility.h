#pragma once

#include "Platform/Accessibility.h"

#include <map>
#include <optional>
#include <vector>

namespace Velloro {

/// An accessibility interface to elements that the test makes.
class InMemoryAccessibility : public Accessibility
{
public:
    /// A text element. What has no value can't be read; what is refused can't be written.
    struct Element : AccessibilityElement
    {
        std::optional<QString> role;
        std::optional<AccessibilityValue> value;
        std::optional<AccessibilityValue> selectedRange;
        bool refusesValue = false;
        bool refusesSelectedRange = false;
        bool refusesSelectedText = false;
    };

    /// One attribute that was asked to be set, whether or not it was.
    struct Write
    {
        QString attribute;
        AccessibilityValue value;

        friend bool operator==(const Write &, const Write &) = default;
    };

    // Script.
    bool trusted = true;
    std::shared_ptr<Element> focused;
    /// The focused elements of applications, by process; an application that is not here has none.
    std::map<pid_t, std::shared_ptr<Element>> focusedOf;
    /// Whether what was written can be seen.
    bool showsWrites = true;

    // What was asked.
    std::vector<Write> writes;
    int trustRequests = 0;

    /// Makes a text field with the focus.
    Element &focusText(const QString &value, TextRange selectedRange)
    {
        focused = std::make_shared<Element>();
        focused->role = QStringLiteral("AXTextField");
        focused->value = value;
        focused->selectedRange = selectedRange;
        return *focused;
    }

    bool isProcessTrusted() override { return trusted; }
    void requestTrust() override { ++trustRequests; }
    AccessibilityElementRef systemWideElement() override { return m_systemWide; }

    AccessibilityElementRef applicationElement(pid_t processIdentifier) override
    {
        return std::make_shared<Application>(processIdentifier);
    }

    Result<AccessibilityValue> copyAttributeValue(const AccessibilityElementRef &element,
                                                  const QString &attribute) override
    {
        std::optional<AccessibilityValue> result;
        if (attribute == u"AXFocusedUIElement") {
            std::shared_ptr<Element> found;
            if (element == m_systemWide)
                found = focused;
            else if (const auto *application = dynamic_cast<const Application *>(element.get()))
                found = focusedOf[application->process];
            if (found)
                result = AccessibilityElementRef(found);
        } else if (const auto *text = dynamic_cast<const Element *>(element.get())) {
            if (attribute == u"AXRole" && text->role)
                result = *text->role;
            else if (attribute == u"AXValue")
                result = text->value;
            else if (attribute == u"AXSelectedTextRange")
                result = text->selectedRange;
        }
        if (!result)
            return tl::unexpected(AccessibilityError::noValue);
        return *result;
    }

    Result<void> setAttributeValue(const AccessibilityElementRef &element,
                                   const QString &attribute,
                                   const AccessibilityValue &value) override
    {
        writes.push_back({attribute, value});
        if (!focused || element != focused)
            return tl::unexpected(AccessibilityError::failure);
        if (attribute == u"AXValue" && !focused->refusesValue)
            focused->value = value;
        else if (attribute == u"AXSelectedTextRange" && !focused->refusesSelectedRange)
            focused->selectedRange = value;
        else if (attribute != u"AXSelectedText" || focused->refusesSelectedText)
            return tl::unexpected(AccessibilityError::attributeUnsupported);
        return {};
    }

    bool showsLastText() override { return showsWrites; }

private:
    struct Application : AccessibilityElement
    {
        explicit Application(pid_t process)
            : process(process)
        {
        }
        const pid_t process;
    };

    const AccessibilityElementRef m_systemWide = std::make_shared<AccessibilityElement>();
};

} // namespace Velloro
