#include "Views/ModelSettingsModel.h"

#include "Models/ModelCatalog.h"
#include "Views/CatalogModelRowModel.h"
#include "Views/ModelGroupModel.h"
#include "Views/PresetConfigRowModel.h"

#include <QDir>
#include <algorithm>
#include <utility>

namespace Velloro {

ModelSettingsModel::ModelSettingsModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    for (const ModelPreset preset : allCases<ModelPreset>())
        m_presets << new PresetConfigRowModel(preset, appState, this);
    for (const ModelSize size : allModelSizes()) {
        QList<CatalogModelRowModel *> rows;
        for (const WhisperModelInfo &info : ModelCatalog::allModels()) {
            if (info.size == size)
                rows << new CatalogModelRowModel(info, appState, this);
        }
        m_groups << new ModelGroupModel(size, rows, m_selectedCategory, this);
    }
}

QStringList ModelSettingsModel::categories() const
{
    QStringList names;
    for (const ModelCategory category : allModelCategories())
        names << displayName(category);
    return names;
}

int ModelSettingsModel::categoryIndex() const
{
    const auto all = allModelCategories();
    return int(std::ranges::find(all, m_selectedCategory) - all.begin());
}

QList<QObject *> ModelSettingsModel::groups() const
{
    return {m_groups.begin(), m_groups.end()};
}

QString ModelSettingsModel::modelsDirectory() const
{
    return QDir::toNativeSeparators(m_appState.whisperManager().modelsDirectory());
}

void ModelSettingsModel::selectCategory(int index)
{
    const auto all = allModelCategories();
    if (index >= 0 && index < int(all.size()))
        setSelectedCategory(all[size_t(index)]);
}

void ModelSettingsModel::toggleGroup(int index)
{
    if (index < 0 || index >= m_groups.size())
        return;
    const ModelSize size = m_groups[index]->size();
    setExpandedSize(m_expandedSize == size ? std::nullopt : std::optional(size));
}

void ModelSettingsModel::reset()
{
    setSelectedCategory(ModelCategory::quantized);
    setExpandedSize(std::nullopt);
}

void ModelSettingsModel::setSelectedCategory(ModelCategory category)
{
    if (std::exchange(m_selectedCategory, category) == category)
        return;
    for (ModelGroupModel *group : std::as_const(m_groups))
        group->setCategory(category);
    Q_EMIT categoryChanged();
}

void ModelSettingsModel::setExpandedSize(std::optional<ModelSize> size)
{
    m_expandedSize = size;
    for (ModelGroupModel *group : std::as_const(m_groups))
        group->setOpen(group->size() == size);
}

} // namespace Velloro
