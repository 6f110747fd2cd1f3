#pragma once

#include "Platform/PlatformError.h"

#include <optional>
#include <tl/expected.hpp>

namespace Velloro {

/// This program among those that are started when the user logs in. Main thread only.
class LoginItem
{
public:
    using Result = tl::expected<void, PlatformError>;

    virtual ~LoginItem() = default;

    /// Has the program, as it runs now, started at every login; replaces an earlier registration.
    virtual Result registerItem() = 0;
    /// Takes the registration back; a success where there is none.
    virtual Result unregisterItem() = 0;
    /// Where the program that is registered is no longer there, because it was moved, registers
    /// this one in its place. Otherwise does nothing; in particular it never makes a registration.
    virtual Result refresh() = 0;
};

} // namespace Velloro
