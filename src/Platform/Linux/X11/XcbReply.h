#pragma once

#include <cstdlib>
#include <memory>

namespace Velloro {

struct FreeDeleter
{
    void operator()(void *pointer) const { std::free(pointer); }
};

/// A reply, event or error that XCB allocated.
template <typename T>
using XcbReply = std::unique_ptr<T, FreeDeleter>;

} // namespace Velloro
