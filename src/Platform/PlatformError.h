#pragma once

#include "Base/StringLiterals.h"

#include <QString>

namespace Velloro {

/// An error that the platform reported, with the text in which it describes itself.
struct PlatformError
{
    /// The numeric code of the facility that failed, 0 where it has none.
    int code = 0;
    /// The description that a user can be shown, without a final full stop of ours.
    QString localizedDescription;

    /// The error's full textual form, for the log.
    [[nodiscard]] QString description() const
    {
        return code == 0 ? localizedDescription
                         : u"%1 (code %2)"_s.arg(localizedDescription).arg(code);
    }

    friend bool operator==(const PlatformError &, const PlatformError &) = default;
};

} // namespace Velloro
