#pragma once

#include "Base/StringLiterals.h"
#include "Platform/PlatformError.h"

#include <system_error>

namespace Velloro {

/// The error of a system call: what was tried, and the system's own words for `errorNumber`.
[[nodiscard]] inline PlatformError systemError(int errorNumber, const QString &what)
{
    const std::string reason = std::system_category().message(errorNumber);
    return {errorNumber, what + u": "_s + QString::fromLocal8Bit(reason.c_str())};
}

} // namespace Velloro
