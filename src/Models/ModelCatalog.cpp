#include "Models/ModelCatalog.h"

#include "Base/StringLiterals.h"

#include <algorithm>
#include <vector>

namespace Velloro::ModelCatalog {

namespace {

/// What a row does not share with its neighbours: category and file name follow from the rest.
struct Row
{
    QStringView id;
    QStringView displayName;
    ModelSize size;
    QuantizationType quantization;
    int fileSizeMB;
    int accuracyStars;
    int speedStars;
    int ramUsageMB;
    bool englishOnly;
};

using enum ModelSize;
using enum QuantizationType;

// clang-format off
constexpr Row fullRows[] = {
    {u"tiny", u"Tiny", tiny, none, 77, 2, 5, 200, false},
    {u"base", u"Base", base, none, 148, 3, 4, 300, false},
    {u"small", u"Small", small, none, 488, 4, 3, 600, false},
    {u"medium", u"Medium", medium, none, 1530, 5, 2, 1500, false},
    {u"large-v2", u"Large V2", largeV2, none, 3090, 5, 1, 3000, false},
    {u"large-v3", u"Large V3", largeV3, none, 3100, 5, 1, 3000, false},
    {u"large-v3-turbo", u"Large V3 Turbo", largeV3Turbo, none, 1620, 5, 3, 2000, false},
};

constexpr Row quantizedRows[] = {
    {u"tiny-q5_1", u"Tiny Q5", tiny, q5_1, 31, 2, 5, 150, false},
    {u"tiny-q8_0", u"Tiny Q8", tiny, q8_0, 42, 2, 5, 160, false},
    {u"tiny.en-q5_1", u"Tiny EN Q5", tiny, q5_1, 31, 2, 5, 150, true},
    {u"tiny.en-q8_0", u"Tiny EN Q8", tiny, q8_0, 42, 2, 5, 160, true},
    {u"base-q5_1", u"Base Q5", base, q5_1, 57, 3, 4, 220, false},
    {u"base-q8_0", u"Base Q8", base, q8_0, 78, 3, 4, 250, false},
    {u"base.en-q5_1", u"Base EN Q5", base, q5_1, 57, 3, 4, 220, true},
    {u"base.en-q8_0", u"Base EN Q8", base, q8_0, 78, 3, 4, 250, true},
    {u"small-q5_1", u"Small Q5", small, q5_1, 181, 4, 3, 450, false},
    {u"small-q8_0", u"Small Q8", small, q8_0, 252, 4, 3, 500, false},
    {u"small.en-q5_1", u"Small EN Q5", small, q5_1, 181, 4, 3, 450, true},
    {u"small.en-q8_0", u"Small EN Q8", small, q8_0, 252, 4, 3, 500, true},
    {u"medium-q5_0", u"Medium Q5", medium, q5_0, 514, 5, 2, 1100, false},
    {u"medium-q8_0", u"Medium Q8", medium, q8_0, 823, 5, 2, 1300, false},
    {u"medium.en-q5_0", u"Medium EN Q5", medium, q5_0, 514, 5, 2, 1100, true},
    {u"medium.en-q8_0", u"Medium EN Q8", medium, q8_0, 823, 5, 2, 1300, true},
    {u"large-v2-q5_0", u"Large V2 Q5", largeV2, q5_0, 1080, 5, 1, 2200, false},
    {u"large-v2-q8_0", u"Large V2 Q8", largeV2, q8_0, 1660, 5, 1, 2600, false},
    {u"large-v3-q5_0", u"Large V3 Q5", largeV3, q5_0, 1080, 5, 1, 2200, false},
    {u"large-v3-turbo-q5_0", u"Large V3 Turbo Q5", largeV3Turbo, q5_0, 547, 5, 3, 1400, false},
    {u"large-v3-turbo-q8_0", u"Large V3 Turbo Q8", largeV3Turbo, q8_0, 874, 5, 3, 1700, false},
};
// clang-format on

void append(std::vector<WhisperModelInfo> &models, std::span<const Row> rows,
            ModelCategory category)
{
    for (const Row &row : rows) {
        models.push_back({
            .id = row.id.toString(),
            .displayName = row.displayName.toString(),
            .fileName = u"ggml-"_s + row.id.toString() + u".bin"_s,
            .category = category,
            .size = row.size,
            .quantization = row.quantization,
            .fileSizeMB = row.fileSizeMB,
            .accuracyStars = row.accuracyStars,
            .speedStars = row.speedStars,
            .ramUsageMB = row.ramUsageMB,
            .englishOnly = row.englishOnly,
        });
    }
}

} // namespace

QString repositoryBaseUrl()
{
    return u"https://huggingface.co/ggerganov/whisper.cpp/resolve/main/"_s;
}

std::span<const WhisperModelInfo> allModels()
{
    static const std::vector<WhisperModelInfo> models = [] {
        std::vector<WhisperModelInfo> built;
        built.reserve(std::size(fullRows) + std::size(quantizedRows));
        append(built, fullRows, ModelCategory::full);
        append(built, quantizedRows, ModelCategory::quantized);
        return built;
    }();
    return models;
}

std::span<const WhisperModelInfo> fullModels()
{
    return allModels().first(std::size(fullRows));
}

std::span<const WhisperModelInfo> quantizedModels()
{
    return allModels().last(std::size(quantizedRows));
}

const WhisperModelInfo &defaultModel()
{
    const WhisperModelInfo *preferred = modelById(u"small-q8_0");
    return preferred ? *preferred : allModels().front();
}

const WhisperModelInfo *modelById(QStringView id)
{
    const auto models = allModels();
    const auto found = std::ranges::find(models, id, &WhisperModelInfo::id);
    return found == models.end() ? nullptr : &*found;
}

} // namespace Velloro::ModelCatalog
