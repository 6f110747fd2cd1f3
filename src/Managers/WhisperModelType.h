#pragma once

#include "Core/Domain/EnumTable.h"

namespace Velloro {

/// The four fixed model families of the just-in-time load. The raw value is the catalogue id of the
/// family's full model.
enum class WhisperModelType { tiny, base, small, medium };

template <>
inline constexpr auto enumTable<WhisperModelType> = std::to_array<EnumCase<WhisperModelType>>({
    {WhisperModelType::tiny, u"tiny"},
    {WhisperModelType::base, u"base"},
    {WhisperModelType::small, u"small"},
    {WhisperModelType::medium, u"medium"},
});

/// The catalogue id of the family's full model.
[[nodiscard]] inline QString modelId(WhisperModelType type)
{
    return rawValue(type);
}

} // namespace Velloro
