#include "Models/ModelCatalog.h"

#include "Base/StringLiterals.h"

#include <clocale>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

QStringList ids(std::span<const WhisperModelInfo> models)
{
    QStringList result;
    for (const WhisperModelInfo &model : models)
        result += model.id;
    return result;
}

TEST(ModelCatalog, RowsStandInTheirOrder)
{
    const QStringList full = u"tiny base small medium large-v2 large-v3 "
                             "large-v3-turbo"_s.split(u' ');
    const QStringList quantized
        = u"tiny-q5_1 tiny-q8_0 tiny.en-q5_1 tiny.en-q8_0 base-q5_1 base-q8_0 "
          "base.en-q5_1 base.en-q8_0 small-q5_1 small-q8_0 small.en-q5_1 "
          "small.en-q8_0 medium-q5_0 medium-q8_0 medium.en-q5_0 medium.en-q8_0 "
          "large-v2-q5_0 large-v2-q8_0 large-v3-q5_0 large-v3-turbo-q5_0 "
          "large-v3-turbo-q8_0"_s.split(u' ');
    EXPECT_EQ(ids(ModelCatalog::fullModels()), full);
    EXPECT_EQ(ids(ModelCatalog::quantizedModels()), quantized);
    EXPECT_EQ(ids(ModelCatalog::allModels()), full + quantized);
}

TEST(ModelCatalog, RowsKeepTheRules)
{
    for (const WhisperModelInfo &model : ModelCatalog::allModels()) {
        SCOPED_TRACE(model.id.toStdString());
        const bool isQuantized = model.category == ModelCategory::quantized;
        QString id = rawValue(model.size);
        QString name = displayName(model.size);
        if (model.englishOnly) {
            id += u".en"_s;
            name += u" EN"_s;
        }
        if (isQuantized) {
            id += u'-' + rawValue(model.quantization);
            name += u' ' + rawValue(model.quantization).first(2).toUpper();
        }
        EXPECT_EQ(model.id, id);
        EXPECT_EQ(model.displayName, name);
        EXPECT_EQ(model.quantization == QuantizationType::none, !isQuantized);
        EXPECT_TRUE(!model.englishOnly || (isQuantized && model.size <= ModelSize::medium));
        if (isQuantized && model.quantization != QuantizationType::q8_0) {
            EXPECT_EQ(model.quantization,
                      model.size < ModelSize::medium ? QuantizationType::q5_1
                                                     : QuantizationType::q5_0);
        }
        EXPECT_EQ(model.downloadURL(u"https://models.example/main/"_s).toString(),
                  u"https://models.example/main/ggml-%1.bin"_s.arg(id));
        EXPECT_EQ(ModelCatalog::modelById(model.id), &model);
    }
}

TEST(ModelCatalog, LooksUpByExactId)
{
    EXPECT_EQ(ModelCatalog::modelById(u"Small-Q8_0"), nullptr);
    EXPECT_EQ(ModelCatalog::modelById(u"large-v3-q8_0"), nullptr);
    EXPECT_EQ(ModelCatalog::modelById(u""), nullptr);
    EXPECT_EQ(ModelCatalog::defaultModel().id, u"small-q8_0"_s);
    EXPECT_TRUE(ModelCatalog::repositoryBaseUrl().endsWith(u'/'));
    EXPECT_TRUE(QUrl(ModelCatalog::repositoryBaseUrl()).isValid());
}

TEST(WhisperModelInfo, FormatsSizes)
{
    // A decimal comma of the user's locale must not come through.
    const char *const locale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const std::pair<int, const char16_t *> cases[] = {
        {31, u"31 MB"},    {874, u"874 MB"},  {1023, u"1023 MB"},
        {1024, u"1.0 GB"}, {1080, u"1.1 GB"}, {1280, u"1.2 GB"},
        {1530, u"1.5 GB"}, {1620, u"1.6 GB"}, {3090, u"3.0 GB"},
    };
    for (const auto &[megabytes, text] : cases) {
        WhisperModelInfo model;
        model.fileSizeMB = megabytes;
        EXPECT_EQ(model.fileSizeFormatted(), QString::fromUtf16(text));
    }
    if (locale)
        std::setlocale(LC_NUMERIC, "C");
}

} // namespace
} // namespace Velloro
