#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <sys/types.h>
#include <variant>

namespace Velloro {

/// An element of the accessibility service on Linux: the whole desktop, an application by its
/// process, or an object on the accessibility bus. An object may be gone by the time it is used.
class AtSpiElement final : public AccessibilityElement
{
public:
    struct Desktop
    {
        friend bool operator==(const Desktop &, const Desktop &) = default;
    };
    using Target = std::variant<Desktop, pid_t, AtSpiReference>;

    explicit AtSpiElement(Target target)
        : target(std::move(target))
    {
    }

    [[nodiscard]] bool isSameAs(const AccessibilityElement &other) const override
    {
        const auto *element = dynamic_cast<const AtSpiElement *>(&other);
        return element && element->target == target;
    }

    const Target target;
};

} // namespace Velloro
