#include "Managers/WhisperModelType.h"

#include <array>

namespace Velloro {

QString modelId(WhisperModelType type)
{
    switch (type) {
    case WhisperModelType::tiny:
        return QStringLiteral("tiny");
    case WhisperModelType::base:
        return QStringLiteral("base");
    case WhisperModelType::small:
        return QStringLiteral("small");
    case WhisperModelType::medium:
        return QStringLiteral("medium");
    }
    Q_UNREACHABLE();
}

std::span<const WhisperModelType> allWhisperModelTypes()
{
    static constexpr std::array cases{WhisperModelType::tiny, WhisperModelType::base,
                                      WhisperModelType::small, WhisperModelType::medium};
    return cases;
}

} // namespace Velloro
