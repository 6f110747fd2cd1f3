#include "Models/ModelCatalog.h"

#include <QMap>
#include <QSet>
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
    const QStringList full = QStringLiteral("tiny base small medium large-v2 large-v3 "
                                            "large-v3-turbo")
                                 .split(u' ');
    const QStringList quantized =
        QStringLiteral("tiny-q5_1 tiny-q8_0 tiny.en-q5_1 tiny.en-q8_0 base-q5_1 base-q8_0 "
                       "base.en-q5_1 base.en-q8_0 small-q5_1 small-q8_0 small.en-q5_1 "
                       "small.en-q8_0 medium-q5_0 medium-q8_0 medium.en-q5_0 medium.en-q8_0 "
                       "large-v2-q5_0 large-v2-q8_0 large-v3-q5_0 large-v3-turbo-q5_0 "
                       "large-v3-turbo-q8_0")
            .split(u' ');
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
            id += QStringLiteral(".en");
            name += QStringLiteral(" EN");
        }
        if (isQuantized) {
            id += u'-' + rawValue(model.quantization);
            name += u' ' + rawValue(model.quantization).first(2).toUpper();
        }
        EXPECT_EQ(model.id, id);
        EXPECT_EQ(model.displayName, name);
        EXPECT_EQ(model.fileName, QStringLiteral("ggml-%1.bin").arg(id));
        EXPECT_EQ(model.quantization == QuantizationType::none, !isQuantized);
        EXPECT_TRUE(!model.englishOnly || (isQuantized && model.size <= ModelSize::medium));
        if (isQuantized && model.quantization != QuantizationType::q8_0) {
            EXPECT_EQ(model.quantization, model.size < ModelSize::medium ? QuantizationType::q5_1
                                                                         : QuantizationType::q5_0);
        }
        EXPECT_EQ(model.downloadURL(QStringLiteral("https://models.example/main/")).toString(),
                  QStringLiteral("https://models.example/main/ggml-%1.bin").arg(id));
        EXPECT_EQ(ModelCatalog::modelById(model.id), &model);
    }
}

TEST(ModelCatalog, NumbersAreThoseOfTheirFamilies)
{
    // By size: stars for accuracy and speed, megabytes of file and memory when full, when
    // quantized small, and when quantized large (0: no such row).
    const struct
    {
        ModelSize size;
        int accuracy, speed, full, fullRam, q5, q5Ram, q8, q8Ram;
    } families[] = {
        {ModelSize::tiny, 2, 5, 77, 200, 31, 150, 42, 160},
        {ModelSize::base, 3, 4, 148, 300, 57, 220, 78, 250},
        {ModelSize::small, 4, 3, 488, 600, 181, 450, 252, 500},
        {ModelSize::medium, 5, 2, 1530, 1500, 514, 1100, 823, 1300},
        {ModelSize::largeV2, 5, 1, 3090, 3000, 1080, 2200, 1660, 2600},
        {ModelSize::largeV3, 5, 1, 3100, 3000, 1080, 2200, 0, 0},
        {ModelSize::largeV3Turbo, 5, 3, 1620, 2000, 547, 1400, 874, 1700},
    };
    for (const WhisperModelInfo &model : ModelCatalog::allModels()) {
        SCOPED_TRACE(model.id.toStdString());
        const auto &family = families[static_cast<size_t>(model.size)];
        ASSERT_EQ(family.size, model.size);
        const bool isFull = model.quantization == QuantizationType::none;
        const bool isQ8 = model.quantization == QuantizationType::q8_0;
        EXPECT_EQ(model.accuracyStars, family.accuracy);
        EXPECT_EQ(model.speedStars, family.speed);
        EXPECT_EQ(model.fileSizeMB, isFull ? family.full : isQ8 ? family.q8 : family.q5);
        EXPECT_EQ(model.ramUsageMB, isFull ? family.fullRam : isQ8 ? family.q8Ram : family.q5Ram);
    }
}

TEST(ModelCatalog, LooksUpByExactId)
{
    EXPECT_EQ(ModelCatalog::modelById(u"Small-Q8_0"), nullptr);
    EXPECT_EQ(ModelCatalog::modelById(u"large-v3-q8_0"), nullptr);
    EXPECT_EQ(ModelCatalog::modelById(u""), nullptr);
    EXPECT_EQ(ModelCatalog::defaultModel().id, QStringLiteral("small-q8_0"));
    EXPECT_TRUE(ModelCatalog::repositoryBaseUrl().endsWith(u'/'));
    EXPECT_TRUE(QUrl(ModelCatalog::repositoryBaseUrl()).isValid());
}

TEST(WhisperModelInfo, FormatsSizes)
{
    // A decimal comma of the user's locale must not come through.
    const char *const locale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const std::pair<int, const char16_t *> cases[] = {
        {31, u"31 MB"},     {874, u"874 MB"},   {1023, u"1023 MB"}, {1024, u"1.0 GB"},
        {1080, u"1.1 GB"},  {1280, u"1.2 GB"},  {1530, u"1.5 GB"},  {1620, u"1.6 GB"},
        {3090, u"3.0 GB"},
    };
    for (const auto &[megabytes, text] : cases) {
        WhisperModelInfo model;
        model.fileSizeMB = megabytes;
        EXPECT_EQ(model.fileSizeFormatted(), QString::fromUtf16(text));
    }
    if (locale)
        std::setlocale(LC_NUMERIC, "C");
}

TEST(WhisperModelInfo, ThreeRowsHaveBadges)
{
    QMap<QString, QString> badges;
    for (const WhisperModelInfo &model : ModelCatalog::allModels()) {
        if (const auto badge = model.badgeText())
            badges.insert(model.id, *badge);
    }
    EXPECT_EQ(badges, (QMap<QString, QString>{
                          {QStringLiteral("small-q8_0"), QStringLiteral("Recommended")},
                          {QStringLiteral("large-v3-turbo"), QStringLiteral("Best Quality")},
                          {QStringLiteral("tiny-q5_1"), QStringLiteral("Fastest")},
                      }));
}

TEST(WhisperModelInfo, EveryFieldCountsForEqualityAndHash)
{
    const WhisperModelInfo base = ModelCatalog::defaultModel();
    QList<WhisperModelInfo> variants(11, base);
    variants[0].id += u'x';
    variants[1].displayName += u'x';
    variants[2].fileName += u'x';
    variants[3].category = ModelCategory::full;
    variants[4].size = ModelSize::tiny;
    variants[5].quantization = QuantizationType::none;
    ++variants[6].fileSizeMB;
    ++variants[7].accuracyStars;
    ++variants[8].speedStars;
    ++variants[9].ramUsageMB;
    variants[10].englishOnly = true;
    for (const WhisperModelInfo &variant : variants) {
        EXPECT_NE(variant, base);
        EXPECT_NE(qHash(variant), qHash(base));
    }
    EXPECT_EQ(QSet<WhisperModelInfo>({base, base}).size(), 1);
}

} // namespace
} // namespace Velloro
