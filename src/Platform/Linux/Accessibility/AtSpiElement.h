#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <utility>

namespace Velloro {

/// An object on the accessibility bus. It may be gone by the time it is used.
class AtSpiElement final : public AccessibilityElement
{
public:
    explicit AtSpiElement(AtSpiReference object)
        : object(std::move(object))
    {
    }

    [[nodiscard]] bool isSameAs(const AccessibilityElement &other) const override
    {
        const auto *element = dynamic_cast<const AtSpiElement *>(&other);
        return element && element->object == object;
    }

    const AtSpiReference object;
};

} // namespace Velloro
