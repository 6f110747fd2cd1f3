#pragma once

#include "Base/CustomDelete.h"

#include <cstdlib>
#include <memory>

namespace Velloro {

/// A reply, event or error that XCB allocated.
template <typename T>
using XcbReply = std::unique_ptr<T, CustomDelete<std::free>>;

} // namespace Velloro
