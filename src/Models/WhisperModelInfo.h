#pragma once

#include "Core/Domain/EnumTable.h"

#include <QString>
#include <QUrl>
#include <optional>

namespace Velloro {

/// How a model's weights are kept. The remark describes the category.
enum class ModelCategory { full, quantized };

template <>
inline constexpr auto enumTable<ModelCategory> = std::to_array<EnumCase<ModelCategory>>({
    {ModelCategory::full, u"Full", u"Full (Best Quality)",
     u"Original models with maximum accuracy. Larger file sizes but best transcription quality."},
    {ModelCategory::quantized, u"Quantized", u"Quantized (Smaller)",
     u"Compressed models that are 50-65% smaller with minimal quality loss. Great for limited "
     "storage."},
});

/// Model families, from the smallest to the greatest.
enum class ModelSize { tiny, base, small, medium, largeV2, largeV3, largeV3Turbo };

template <>
inline constexpr auto enumTable<ModelSize> = std::to_array<EnumCase<ModelSize>>({
    {ModelSize::tiny, u"tiny", u"Tiny"},
    {ModelSize::base, u"base", u"Base"},
    {ModelSize::small, u"small", u"Small"},
    {ModelSize::medium, u"medium", u"Medium"},
    {ModelSize::largeV2, u"large-v2", u"Large V2"},
    {ModelSize::largeV3, u"large-v3", u"Large V3"},
    {ModelSize::largeV3Turbo, u"large-v3-turbo", u"Large V3 Turbo"},
});

/// Weight formats.
enum class QuantizationType { none, q5_0, q5_1, q8_0 };

template <>
inline constexpr auto enumTable<QuantizationType> = std::to_array<EnumCase<QuantizationType>>({
    {QuantizationType::none, u"none"},
    {QuantizationType::q5_0, u"q5_0"},
    {QuantizationType::q5_1, u"q5_1"},
    {QuantizationType::q8_0, u"q8_0"},
});

/// One row of the model catalogue.
struct WhisperModelInfo
{
    /// Catalogue key, unique.
    QString id;
    QString displayName;
    /// Name of the file in the models directory and in the repository.
    QString fileName;
    ModelCategory category = ModelCategory::full;
    ModelSize size = ModelSize::tiny;
    QuantizationType quantization = QuantizationType::none;
    /// Download size shown to the user, in megabytes.
    int fileSizeMB = 0;
    /// Ratings from 1 to 5.
    int accuracyStars = 0;
    int speedStars = 0;
    /// Memory needed, shown to the user, in megabytes.
    int ramUsageMB = 0;
    bool englishOnly = false;

    /// Where the file is fetched from: `baseUrl` followed directly by the file name.
    [[nodiscard]] QUrl downloadURL(const QString &baseUrl) const;
    /// "874 MB", and from 1024 MB on "1.5 GB".
    [[nodiscard]] QString fileSizeFormatted() const;
    /// The word on the row's badge, where it has one.
    [[nodiscard]] std::optional<QString> badgeText() const;

    friend bool operator==(const WhisperModelInfo &, const WhisperModelInfo &) = default;
};

[[nodiscard]] size_t qHash(const WhisperModelInfo &info, size_t seed = 0);

} // namespace Velloro
