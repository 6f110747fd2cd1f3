#include "Views/Settings/Models/ModelGroupViewModel.h"

#include "Views/Settings/Models/CatalogModelRowViewModel.h"

#include <utility>

namespace Velloro {

ModelGroupViewModel::ModelGroupViewModel(ModelSize size, QList<CatalogModelRowViewModel *> rows,
                                         ModelCategory category, QObject *parent)
    : QObject(parent)
    , m_size(size)
    , m_allRows(std::move(rows))
    , m_category(category)
{
}

QString ModelGroupViewModel::countText() const
{
    return tr("%1 models").arg(rows().size());
}

QList<QObject *> ModelGroupViewModel::rows() const
{
    QList<QObject *> shown;
    for (CatalogModelRowViewModel *row : m_allRows) {
        if (row->info().category == m_category)
            shown << row;
    }
    return shown;
}

void ModelGroupViewModel::setOpen(bool open)
{
    if (std::exchange(m_isOpen, open) != open)
        Q_EMIT isOpenChanged();
}

void ModelGroupViewModel::setCategory(ModelCategory category)
{
    if (std::exchange(m_category, category) != category)
        Q_EMIT rowsChanged();
}

} // namespace Velloro
