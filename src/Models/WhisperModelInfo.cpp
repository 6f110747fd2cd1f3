#include "Models/WhisperModelInfo.h"

#include <QHash>
#include <array>
#include <charconv>

namespace Velloro {

QString rawValue(ModelCategory category)
{
    switch (category) {
    case ModelCategory::full:
        return QStringLiteral("Full");
    case ModelCategory::quantized:
        return QStringLiteral("Quantized");
    }
    Q_UNREACHABLE();
}

QString rawValue(ModelSize size)
{
    switch (size) {
    case ModelSize::tiny:
        return QStringLiteral("tiny");
    case ModelSize::base:
        return QStringLiteral("base");
    case ModelSize::small:
        return QStringLiteral("small");
    case ModelSize::medium:
        return QStringLiteral("medium");
    case ModelSize::largeV2:
        return QStringLiteral("large-v2");
    case ModelSize::largeV3:
        return QStringLiteral("large-v3");
    case ModelSize::largeV3Turbo:
        return QStringLiteral("large-v3-turbo");
    }
    Q_UNREACHABLE();
}

QString rawValue(QuantizationType type)
{
    switch (type) {
    case QuantizationType::none:
        return QStringLiteral("none");
    case QuantizationType::q5_0:
        return QStringLiteral("q5_0");
    case QuantizationType::q5_1:
        return QStringLiteral("q5_1");
    case QuantizationType::q8_0:
        return QStringLiteral("q8_0");
    }
    Q_UNREACHABLE();
}

QString displayName(ModelCategory category)
{
    switch (category) {
    case ModelCategory::full:
        return QStringLiteral("Full (Best Quality)");
    case ModelCategory::quantized:
        return QStringLiteral("Quantized (Smaller)");
    }
    Q_UNREACHABLE();
}

QString displayName(ModelSize size)
{
    switch (size) {
    case ModelSize::tiny:
        return QStringLiteral("Tiny");
    case ModelSize::base:
        return QStringLiteral("Base");
    case ModelSize::small:
        return QStringLiteral("Small");
    case ModelSize::medium:
        return QStringLiteral("Medium");
    case ModelSize::largeV2:
        return QStringLiteral("Large V2");
    case ModelSize::largeV3:
        return QStringLiteral("Large V3");
    case ModelSize::largeV3Turbo:
        return QStringLiteral("Large V3 Turbo");
    }
    Q_UNREACHABLE();
}

QString description(ModelCategory category)
{
    switch (category) {
    case ModelCategory::full:
        return QStringLiteral("Original models with maximum accuracy. Larger file sizes but best "
                              "transcription quality.");
    case ModelCategory::quantized:
        return QStringLiteral("Compressed models that are 50-65% smaller with minimal quality "
                              "loss. Great for limited storage.");
    }
    Q_UNREACHABLE();
}

std::span<const ModelCategory> allModelCategories()
{
    static constexpr std::array cases{ModelCategory::full, ModelCategory::quantized};
    return cases;
}

std::span<const ModelSize> allModelSizes()
{
    static constexpr std::array cases{
        ModelSize::tiny,    ModelSize::base,    ModelSize::small,       ModelSize::medium,
        ModelSize::largeV2, ModelSize::largeV3, ModelSize::largeV3Turbo};
    return cases;
}

std::span<const QuantizationType> allQuantizationTypes()
{
    static constexpr std::array cases{QuantizationType::none, QuantizationType::q5_0,
                                      QuantizationType::q5_1, QuantizationType::q8_0};
    return cases;
}

QUrl WhisperModelInfo::downloadURL(const QString &baseUrl) const
{
    return QUrl(baseUrl + fileName);
}

QString WhisperModelInfo::fileSizeFormatted() const
{
    constexpr int megabytesPerGigabyte = 1024;
    if (fileSizeMB < megabytesPerGigabyte)
        return QString::number(fileSizeMB) + QStringLiteral(" MB");
    // Not printf, whose decimal point follows the user's locale.
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   static_cast<double>(fileSizeMB) / megabytesPerGigabyte,
                                   std::chars_format::fixed, 1)
                         .ptr;
    return QString::fromLatin1(digits.data(), end - digits.data()) + QStringLiteral(" GB");
}

std::optional<QString> WhisperModelInfo::badgeText() const
{
    if (id == u"small-q8_0")
        return QStringLiteral("Recommended");
    if (id == u"large-v3-turbo")
        return QStringLiteral("Best Quality");
    if (id == u"tiny-q5_1")
        return QStringLiteral("Fastest");
    return std::nullopt;
}

size_t qHash(const WhisperModelInfo &info, size_t seed)
{
    return qHashMulti(seed, info.id, info.displayName, info.fileName,
                      static_cast<int>(info.category), static_cast<int>(info.size),
                      static_cast<int>(info.quantization), info.fileSizeMB, info.accuracyStars,
                      info.speedStars, info.ramUsageMB, info.englishOnly);
}

} // namespace Velloro
