#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiBus.h"
#include "Platform/Linux/Accessibility/AtSpiFocusTracker.h"
#include "Platform/Linux/Accessibility/AtSpiText.h"

#include <functional>
#include <optional>
#include <utility>

namespace Velloro {

/// The accessibility interface on the desktop's accessibility bus (AT-SPI), spoken directly over
/// D-Bus so that every call has a time limit.
///
/// An object of this process has no attributes: it could not answer while this process asks.
class AtSpiAccessibility final : public Accessibility
{
public:
    /// Starts to connect; does not wait.
    AtSpiAccessibility();
    ~AtSpiAccessibility() override;

    [[nodiscard]] bool isProcessTrusted() override;
    void requestTrust() override;
    [[nodiscard]] AccessibilityElementRef systemWideElement() override;
    [[nodiscard]] AccessibilityElementRef applicationElement(pid_t processIdentifier) override;
    [[nodiscard]] Result<AccessibilityValue>
    copyAttributeValue(const AccessibilityElementRef &element, const QString &attribute) override;
    [[nodiscard]] Result<void> setAttributeValue(const AccessibilityElementRef &element,
                                                 const QString &attribute,
                                                 const AccessibilityValue &value) override;
    [[nodiscard]] bool showsLastText() override;

    /// Called, if set, whenever the desktop's focused element is asked for: whatever was sent to
    /// it by other ways must have arrived before it is read. Where that returns false, it has not,
    /// and the element can't be had: what is written now would come before it.
    void setBeforeAccess(std::function<bool()> hook) { m_beforeAccess = std::move(hook); }

    /// Tells, if set, whether the active window is one of a program that is known to take text
    /// although the bus may say otherwise: what has the focus there has no role then, unless that
    /// is one of text.
    void setActiveWindowTakesText(std::function<bool()> hook)
    {
        m_activeWindowTakesText = std::move(hook);
    }

    /// Whether the focused element is a terminal; false where that can't be known.
    [[nodiscard]] bool isTerminalFocused();

private:
    struct Written
    {
        AtSpiReference object;
        AtSpiText::Insertion insertion;
    };

    Result<AccessibilityValue> role(const AtSpiReference &object);
    Result<AtSpiReference> objectOf(const AccessibilityElementRef &element);
    AtSpiText &textOf(const AtSpiReference &object);

    std::function<bool()> m_beforeAccess;
    std::function<bool()> m_activeWindowTakesText;
    AtSpiBus m_bus;
    AtSpiFocusTracker m_focus;
    /// What is known about the text that was used last, for the rest of the event loop's turn.
    std::optional<AtSpiText> m_text;
    /// Where the text written last must show.
    std::optional<Written> m_written;
};

} // namespace Velloro
