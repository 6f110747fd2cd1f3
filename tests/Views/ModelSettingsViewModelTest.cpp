#include "Views/Settings/Models/ModelSettingsViewModel.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class ModelSettingsViewModelTest : public ::testing::Test
{
protected:
    ModelGroupViewModel &group(ModelSize size) { return *model.groups().at(int(size)); }
    PresetConfigRowViewModel &preset(ModelPreset preset)
    {
        return *model.presets().at(int(preset));
    }
    CatalogModelRowViewModel *row(const QString &name)
    {
        for (const ModelGroupViewModel *group : model.groups()) {
            for (CatalogModelRowViewModel *row : group->rows()) {
                if (row->displayName() == name)
                    return row;
            }
        }
        return nullptr;
    }
    QStringList names(ModelSize size)
    {
        QStringList names;
        for (const CatalogModelRowViewModel *row : group(size).rows())
            names << row->displayName();
        return names;
    }
    void putFile(const char *modelId)
    {
        memory.fileSystem->files.insert(
            appState.whisperManager().modelURL(QLatin1StringView(modelId)));
        appState.whisperManager().refreshModelStates();
    }

    QTemporaryDir directory;
    InMemoryPlatform memory;
    const bool isOnDisk = memory.fileSystem->supportDirectory.emplace(directory.path()).size() > 0;
    AppState appState{memory.platform};
    ModelSettingsViewModel model{appState};
};

TEST_F(ModelSettingsViewModelTest, GroupsTheCatalogueByCategoryAndSize)
{
    EXPECT_EQ(model.categories(),
              QStringList({u"Full (Best Quality)"_s, u"Quantized (Smaller)"_s}));
    EXPECT_EQ(model.categoryIndex(), 1);
    EXPECT_TRUE(model.categoryDescription().startsWith(u"Compressed models"));
    EXPECT_EQ(names(ModelSize::largeV3Turbo),
              QStringList({u"Large V3 Turbo Q5"_s, u"Large V3 Turbo Q8"_s}));
    EXPECT_EQ(group(ModelSize::base).countText(), u"4 models");

    // An open group stays open in the other category, with its other rows.
    model.toggleGroup(int(ModelSize::largeV2));
    QSignalSpy rows(&group(ModelSize::largeV2), &ModelGroupViewModel::rowsChanged);
    model.selectCategory(0);
    EXPECT_EQ(rows.count(), 1);
    EXPECT_TRUE(group(ModelSize::largeV2).isOpen());
    EXPECT_EQ(names(ModelSize::largeV2), QStringList(u"Large V2"_s));
    EXPECT_EQ(group(ModelSize::largeV2).countText(), u"1 models");
    int count = 0;
    for (const int category : {0, 1}) {
        model.selectCategory(category);
        for (const ModelSize size : allCases<ModelSize>())
            count += int(names(size).size());
    }
    EXPECT_EQ(count, 28);

    // At most one is open; what is closed by hand leaves none.
    model.toggleGroup(int(ModelSize::tiny));
    EXPECT_FALSE(group(ModelSize::largeV2).isOpen());
    EXPECT_TRUE(group(ModelSize::tiny).isOpen());
    model.toggleGroup(int(ModelSize::tiny));
    EXPECT_FALSE(group(ModelSize::tiny).isOpen());

    model.selectCategory(0);
    model.toggleGroup(0);
    model.reset();
    EXPECT_EQ(model.categoryIndex(), 1);
    EXPECT_FALSE(group(ModelSize::tiny).isOpen());
}

TEST_F(ModelSettingsViewModelTest, ARowGoesFromDownloadOverSelectionToDeletion)
{
    CatalogModelRowViewModel &base = *row(u"Base EN Q5"_s);
    EXPECT_TRUE(base.isEnglishOnly());
    EXPECT_EQ(base.fileSizeText(), u"57 MB");
    EXPECT_EQ(base.state(), ModelFileViewModel::NotDownloaded);
    base.download();
    DownloadSessionDelegate &network = memory.downloadSession->delegate;
    network.downloadDidWriteData(1, 427, 1000);
    EXPECT_EQ(base.state(), ModelFileViewModel::Downloading);
    EXPECT_EQ(base.percentText(), u"42%");
    network.downloadDidComplete(1, PlatformError{7, u"No connection"_s});
    EXPECT_EQ(base.state(), ModelFileViewModel::Failed);
    EXPECT_EQ(base.detail(), u"No connection");
    base.download();
    ASSERT_EQ(memory.downloadSession->tasks.size(), 2);
    memory.fileSystem->files.insert(u"/tmp/part"_s);
    network.downloadDidFinish(2, u"/tmp/part"_s);
    EXPECT_EQ(base.state(), ModelFileViewModel::Downloaded);
    EXPECT_EQ(base.detail(), u"");
    EXPECT_EQ(row(u"Base Q5"_s)->state(), ModelFileViewModel::NotDownloaded);

    EXPECT_FALSE(base.isSelected());
    const QString mapped = appState.modelId(ModelPreset::medium);
    QSignalSpy selections(&base, &CatalogModelRowViewModel::isSelectedChanged);
    // The recogniser looks for a real file.
    const QString path = appState.whisperManager().modelURL(u"base.en-q5_1"_s);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("model");
    file.close();
    base.select();
    ASSERT_TRUE(waitUntil([&] { return base.isSelected(); }));
    EXPECT_EQ(selections.count(), 1);
    EXPECT_EQ(appState.modelId(ModelPreset::medium), mapped) << "presets stay as they are";

    PresetConfigRowViewModel &small = preset(ModelPreset::small);
    EXPECT_EQ(small.downloadedModels(), QStringList(u"Base EN Q5"_s));
    base.deleteModel();
    EXPECT_EQ(base.state(), ModelFileViewModel::NotDownloaded);
    EXPECT_TRUE(small.downloadedModels().isEmpty());
}

TEST_F(ModelSettingsViewModelTest, APresetOffersWhatIsThereAndListsTheRest)
{
    PresetConfigRowViewModel &large = preset(ModelPreset::large);
    EXPECT_EQ(large.title(), u"Large");
    EXPECT_EQ(large.label(), u"Accurate");
    EXPECT_EQ(large.symbol(), u"checkmark.seal");
    EXPECT_TRUE(large.downloadedModels().isEmpty());
    EXPECT_EQ(large.notDownloadedModels().size(), 28);
    EXPECT_EQ(large.notDownloadedModels().first(), u"Tiny • 77 MB");

    putFile("small-q5_1");
    putFile("tiny");
    EXPECT_EQ(large.downloadedModels(), QStringList({u"Tiny"_s, u"Small Q5"_s}));
    EXPECT_EQ(large.notDownloadedModels().size(), 26);
    EXPECT_EQ(large.assignedIndex(), -1);

    QSignalSpy mappings(&large, &PresetConfigRowViewModel::mappingChanged);
    QSignalSpy others(&preset(ModelPreset::small), &PresetConfigRowViewModel::mappingChanged);
    large.assign(1);
    EXPECT_EQ(appState.modelId(ModelPreset::large), u"small-q5_1");
    EXPECT_EQ(large.menuLabel(), u"Small Q5");
    EXPECT_EQ(large.assignedIndex(), 1);
    EXPECT_EQ(mappings.count(), 1);
    EXPECT_EQ(others.count(), 0);
    large.assign(2);
    EXPECT_EQ(appState.modelId(ModelPreset::large), u"small-q5_1");

    // A download's progress does not build the menus anew.
    QSignalSpy models(&large, &PresetConfigRowViewModel::modelsChanged);
    row(u"Tiny Q5"_s)->download();
    memory.downloadSession->delegate.downloadDidWriteData(1, 1, 2);
    EXPECT_EQ(models.count(), 0);

    appState.setModelId(u"gone"_s, ModelPreset::large);
    EXPECT_EQ(large.menuLabel(), u"Select");
    EXPECT_EQ(large.assignedIndex(), -1);
}

} // namespace
} // namespace Velloro
