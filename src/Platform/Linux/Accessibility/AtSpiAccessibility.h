#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiApplications.h"
#include "Platform/Linux/Accessibility/AtSpiBus.h"
#include "Platform/Linux/Accessibility/AtSpiFocusTracker.h"
#include "Platform/Linux/Accessibility/AtSpiLauncher.h"
#include "Platform/Linux/Accessibility/AtSpiText.h"
#include "Platform/Linux/PasteCoordinator.h"

#include <memory>
#include <optional>
#include <utility>

namespace Velloro {

/// The accessibility interface on the desktop's accessibility bus (AT-SPI), spoken directly over
/// D-Bus so that every call has a time limit.
///
/// An object of this process is neither read nor written: it could not answer while this process
/// asks.
class AtSpiAccessibility final : public Accessibility, public PasteCoordinator::Reader
{
public:
    /// Starts to connect; does not wait. The desktop's focused element is unavailable while strokes
    /// that were sent to it are still to come: what is written then would come before them.
    explicit AtSpiAccessibility(std::shared_ptr<PasteCoordinator> pasting);
    ~AtSpiAccessibility() override;

    [[nodiscard]] bool isProcessTrusted() override;
    void requestTrust() override;
    [[nodiscard]] Result<AccessibilityElementRef> focusedElement() override;
    [[nodiscard]] Result<AccessibilityElementRef> focusedElementOf(pid_t process) override;
    [[nodiscard]] Result<AccessibilityRole> role(const AccessibilityElementRef &element) override;
    [[nodiscard]] Result<QString> text(const AccessibilityElementRef &element) override;
    [[nodiscard]] Result<TextRange> selection(const AccessibilityElementRef &element) override;
    [[nodiscard]] Result<void> setText(const AccessibilityElementRef &element,
                                       const QString &text) override;
    [[nodiscard]] Result<void> setSelection(const AccessibilityElementRef &element,
                                            const TextRange &range) override;
    [[nodiscard]] Result<void> insert(const AccessibilityElementRef &element,
                                      const QString &text) override;
    [[nodiscard]] bool showsLastText() override;

    [[nodiscard]] bool isTerminalFocused() override;

private:
    struct Written
    {
        AtSpiReference object;
        AtSpiText::Insertion insertion;
    };

    Result<AtSpiReference> objectOf(const AccessibilityElementRef &element);
    bool isSearchField(const AtSpiReference &object);
    AtSpiText &textOf(const AtSpiReference &object);
    template <typename Value>
    Result<void> write(const AccessibilityElementRef &element,
                       Result<void> (AtSpiText::*edit)(const Value &), const Value &value);

    std::shared_ptr<PasteCoordinator> m_pasting;
    AtSpiLauncher m_launcher;
    AtSpiBus m_bus;
    AtSpiApplications m_applications;
    AtSpiFocusTracker m_focus;
    /// What is known about the text that was used last, for the rest of the event loop's turn.
    std::optional<AtSpiText> m_text;
    /// Where the text written last must show.
    std::optional<Written> m_written;
};

} // namespace Velloro
