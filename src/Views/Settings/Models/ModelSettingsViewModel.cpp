#include "Views/Settings/Models/ModelSettingsViewModel.h"

#include "Models/ModelCatalog.h"

#include <QDir>
#include <algorithm>
#include <utility>

namespace Velloro {

ModelSettingsViewModel::ModelSettingsViewModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
{
    for (const ModelPreset preset : allCases<ModelPreset>())
        m_presets << new PresetConfigRowViewModel(preset, appState, this);
    for (const ModelSize size : allCases<ModelSize>()) {
        QList<CatalogModelRowViewModel *> rows;
        for (const WhisperModelInfo &info : ModelCatalog::allModels()) {
            if (info.size == size)
                rows << new CatalogModelRowViewModel(info, appState, this);
        }
        m_groups << new ModelGroupViewModel(size, rows, m_selectedCategory, this);
    }
}

QStringList ModelSettingsViewModel::categories() const
{
    QStringList names;
    for (const ModelCategory category : allCases<ModelCategory>())
        names << displayName(category);
    return names;
}

int ModelSettingsViewModel::categoryIndex() const
{
    const auto all = allCases<ModelCategory>();
    return int(std::ranges::find(all, m_selectedCategory) - all.begin());
}

QString ModelSettingsViewModel::modelsDirectory() const
{
    return QDir::toNativeSeparators(m_appState.whisperManager().modelsDirectory());
}

void ModelSettingsViewModel::selectCategory(int index)
{
    const auto all = allCases<ModelCategory>();
    if (index >= 0 && index < int(all.size()))
        setSelectedCategory(all[size_t(index)]);
}

void ModelSettingsViewModel::toggleGroup(int index)
{
    if (index < 0 || index >= m_groups.size())
        return;
    const ModelSize size = m_groups[index]->size();
    setExpandedSize(m_expandedSize == size ? std::nullopt : std::optional(size));
}

void ModelSettingsViewModel::reset()
{
    setSelectedCategory(ModelCategory::quantized);
    setExpandedSize(std::nullopt);
}

void ModelSettingsViewModel::setSelectedCategory(ModelCategory category)
{
    if (std::exchange(m_selectedCategory, category) == category)
        return;
    for (ModelGroupViewModel *group : std::as_const(m_groups))
        group->setCategory(category);
    Q_EMIT categoryChanged();
}

void ModelSettingsViewModel::setExpandedSize(std::optional<ModelSize> size)
{
    m_expandedSize = size;
    for (ModelGroupViewModel *group : std::as_const(m_groups))
        group->setOpen(group->size() == size);
}

} // namespace Velloro
