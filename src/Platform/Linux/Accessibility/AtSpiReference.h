#pragma once

#include <QString>

namespace Velloro {

/// The address of an object on the accessibility bus: its application's unique bus name and its
/// object path.
struct AtSpiReference
{
    QString service;
    QString path;

    /// Whether it names no object.
    [[nodiscard]] bool isNull() const
    {
        return service.isEmpty() || path.isEmpty() || path.endsWith(u"/null");
    }

    friend bool operator==(const AtSpiReference &, const AtSpiReference &) = default;
};

} // namespace Velloro
