#pragma once

#include <QString>
#include <QUrl>
#include <optional>
#include <span>

namespace Velloro {

/// How a model's weights are kept.
enum class ModelCategory { full, quantized };

/// Model families, from the smallest to the greatest.
enum class ModelSize { tiny, base, small, medium, largeV2, largeV3, largeV3Turbo };

/// Weight formats.
enum class QuantizationType { none, q5_0, q5_1, q8_0 };

[[nodiscard]] QString rawValue(ModelCategory category);
[[nodiscard]] QString rawValue(ModelSize size);
[[nodiscard]] QString rawValue(QuantizationType type);
[[nodiscard]] QString displayName(ModelCategory category);
[[nodiscard]] QString displayName(ModelSize size);
[[nodiscard]] QString description(ModelCategory category);
/// All cases in declaration order.
[[nodiscard]] std::span<const ModelCategory> allModelCategories();
[[nodiscard]] std::span<const ModelSize> allModelSizes();
[[nodiscard]] std::span<const QuantizationType> allQuantizationTypes();

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
