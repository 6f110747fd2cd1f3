#pragma once

namespace Velloro {

/// Has a `std::unique_ptr` end what it holds by a function of the library that made it.
template <auto function>
struct CustomDelete
{
    template <typename T>
    void operator()(T *handle) const
    {
        function(handle);
    }
};

} // namespace Velloro
