#include "Views/ModelGroupModel.h"

#include "Views/CatalogModelRowModel.h"

#include <utility>

namespace Velloro {

ModelGroupModel::ModelGroupModel(ModelSize size, QList<CatalogModelRowModel *> rows,
                                 ModelCategory category, QObject *parent)
    : QObject(parent)
    , m_size(size)
    , m_allRows(std::move(rows))
    , m_category(category)
{
}

QString ModelGroupModel::countText() const
{
    return tr("%1 models").arg(rows().size());
}

QList<QObject *> ModelGroupModel::rows() const
{
    QList<QObject *> shown;
    for (CatalogModelRowModel *row : m_allRows) {
        if (row->info().category == m_category)
            shown << row;
    }
    return shown;
}

void ModelGroupModel::setOpen(bool open)
{
    if (std::exchange(m_isOpen, open) != open)
        Q_EMIT isOpenChanged();
}

void ModelGroupModel::setCategory(ModelCategory category)
{
    if (std::exchange(m_category, category) != category)
        Q_EMIT rowsChanged();
}

} // namespace Velloro
